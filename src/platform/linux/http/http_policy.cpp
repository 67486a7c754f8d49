#include "platform/linux/http/http_policy.h"

#include <arpa/inet.h>

#include <algorithm>
#include <array>
#include <utility>

#include "base/debug.h"

namespace quorvance {
namespace {

constexpr std::string_view kPinPrefix = "sha256//";
// Of 32 bytes: 43 characters and one that fills up.
constexpr std::size_t kPinCharacters = 44;

constexpr std::array<std::string_view, 6> kProxySchemes = {"http",    "https",  "socks4",
                                                           "socks4a", "socks5", "socks5h"};

std::string lowerCase(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c | 0x20);
  }
  return lower;
}

bool isBase64Character(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '+' ||
         c == '/';
}

bool isPin(std::string_view pin) {
  if (!pin.starts_with(kPinPrefix)) return false;
  pin.remove_prefix(kPinPrefix.size());
  if (pin.size() != kPinCharacters || !pin.ends_with('=')) return false;
  pin.remove_suffix(1);
  return std::all_of(pin.begin(), pin.end(), isBase64Character);
}

bool arePins(std::string_view pins) {
  for (;;) {
    const std::size_t end = std::min(pins.find(';'), pins.size());
    if (!isPin(pins.substr(0, end))) return false;
    if (end == pins.size()) return true;
    pins.remove_prefix(end + 1);
  }
}

bool isProxy(std::string_view url) {
  const std::size_t end = url.find("://");
  if (end == std::string_view::npos) return false;
  const std::string scheme = lowerCase(url.substr(0, end));
  if (std::find(kProxySchemes.begin(), kProxySchemes.end(), scheme) == kProxySchemes.end()) {
    return false;
  }
  const std::string_view rest = url.substr(end + 3);
  const std::string_view place = rest.substr(rest.rfind('@') + 1);
  return !place.empty() && place.front() != ':' && place.front() != '/' &&
         std::all_of(rest.begin(), rest.end(), [](char c) { return c > ' ' && c < '\x7f'; });
}

/// Scheme, host and port, in lower case.
std::string serverOf(std::string_view url) {
  const std::size_t authority = url.find("://") + 3;
  return lowerCase(url.substr(0, url.find_first_of("/?#", authority)));
}

bool isLoopback(std::string_view host) {
  if (host == "localhost" || host.ends_with(".localhost") || host == "[::1]") return true;
  in_addr address = {};
  if (inet_pton(AF_INET, std::string(host).c_str(), &address) != 1) return false;
  return ntohl(address.s_addr) >> 24 == IN_LOOPBACKNET;
}

}  // namespace

std::string faultOfOptions(const HttpOptions& options) {
  for (const std::string* text :
       {&options.caFile, &options.pinnedPublicKey, &options.clientCertificateFile,
        &options.clientKeyFile, &options.clientKeyPassphrase, &options.proxyUrl}) {
    if (text->find('\0') != std::string::npos) return "an option holds a NUL";
  }
  if (!options.pinnedPublicKey.empty() && !arePins(options.pinnedPublicKey)) {
    return "pinnedPublicKey is not \"sha256//\" and a SHA-256 in base64";
  }
  if (options.clientCertificateFile.empty() &&
      !(options.clientKeyFile.empty() && options.clientKeyPassphrase.empty())) {
    return "clientKeyFile or clientKeyPassphrase without clientCertificateFile";
  }
  if (!options.proxyUrl.empty() && !isProxy(options.proxyUrl)) {
    return "proxyUrl is no URL of a proxy";
  }
  return {};
}

bool isPlainToOthers(std::string_view url) {
  const std::string server = serverOf(url);
  constexpr std::string_view kPlain = "http://";
  if (!server.starts_with(kPlain)) return false;
  std::string_view host = std::string_view(server).substr(kPlain.size());
  const std::size_t bracket = host.find(']');
  host = host.substr(0, host.find(':', bracket == std::string_view::npos ? 0 : bracket));
  return !isLoopback(host);
}

HttpPolicy::HttpPolicy(HttpOptions options)
    : options_(std::move(options)), optionsFault_(faultOfOptions(options_)) {}

std::string HttpPolicy::faultOf(std::string_view url) {
  if (optionsFault_.empty()) return faultOfPlain(url);
  if (isNews(optionsFault_)) logMessage(LogLevel::error, "HTTP options: " + optionsFault_);
  return optionsFault_;
}

std::string HttpPolicy::faultOfPlain(std::string_view url) {
  if (options_.allowHttp || !isPlainToOthers(url)) return {};
  const std::string server = serverOf(url);
  const bool isRefused = !options_.caFile.empty() || !options_.pinnedPublicKey.empty() ||
                         !options_.clientCertificateFile.empty();
  if (isRefused) {
    std::string fault = "plain http is refused beside options for TLS";
    if (isNews(server)) logMessage(LogLevel::error, server + ": " + fault);
    return fault;
  }
  if (isNews(server)) {
    logMessage(LogLevel::warning, server + ": requests go there in plain text");
  }
  return {};
}

bool HttpPolicy::isNews(std::string_view what) {
  return told_.size() < kMaxWarned && told_.emplace(what).second;
}

}  // namespace quorvance
