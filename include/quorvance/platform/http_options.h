#pragma once

#include "quorvance/standard_library.h"

#include <string>

#pragma GCC visibility push(default)

namespace quorvance {

/// How the server is reached and recognised. The defaults are those of an application without
/// demands of its own: the system's certificates, no proxy, TLS 1.2 or later.
///
/// Options that cannot be used (a key that is no key, a file that is missing or holds something
/// else, what the TLS library does not know) never weaken anything: every request then ends as a
/// transport error that says why; of what can be seen without the files the log tells as well.
struct HttpOptions {
  /// A file of certificates in PEM form to trust instead of the system's. Empty: the system's.
  std::string caFile{};
  /// "sha256//" and the base64 of the SHA-256 of the server's public key (SubjectPublicKeyInfo in
  /// DER form); several, of which one must match, joined by ";". Checked beside the certificate,
  /// not in its place. Empty: any key.
  std::string pinnedPublicKey{};
  /// What this client shows of itself when the server asks: a certificate in PEM form, its key
  /// (empty: in the same file), and the key's passphrase (empty: none). Empty: nothing.
  std::string clientCertificateFile{};
  std::string clientKeyFile{};
  std::string clientKeyPassphrase{};
  /// "http://", "https://", "socks4://", "socks4a://", "socks5://" or "socks5h://", a host and a
  /// port, a user and a password in front of the host where it wants them. Empty: none, whatever
  /// the environment says.
  std::string proxyUrl{};
  /// Plain http to another machine is sent as ever; unless this is set, each server that is reached
  /// so is warned of once in the log. With `caFile`, `pinnedPublicKey` or `clientCertificateFile`
  /// it is refused unless this is set, since none of them would be looked at.
  bool allowHttp = false;
};

}  // namespace quorvance

#pragma GCC visibility pop
