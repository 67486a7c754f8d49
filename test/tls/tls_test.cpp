#include <curl/curl.h>
#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <sstream>
#include <string>

#include "platform/testing/temporary_folder_test_support.h"
#include "quorvance/platform/linux_platform.h"
#include "test/child_process.h"
#include "test/child_programs.h"

namespace quorvance {
namespace {

/// What tls_server.py offers.
struct TlsServers {
  TlsServers() {
    child.waitForLines(1);
    std::istringstream line(child.said());
    std::string ready;
    line >> ready >> usual >> asking >> old >> pin;
    EXPECT_EQ(ready, "ready");
  }

  TemporaryFolder folder;
  ChildProcess child{{kPython, kTlsServerScript, folder.path()}};
  std::string usual;
  std::string asking;
  std::string old;
  std::string pin;
};

/// 0 for an answer of status 200, else the error's code, or -1 for another status.
std::int64_t outcomeOf(const HttpOptions& options, const std::string& port) {
  LinuxPlatformOptions platformOptions;
  platformOptions.http = options;
  const Platform platform = makeLinuxPlatform(platformOptions);
  std::promise<HttpReply> reply;
  platform.http->send(
      {"https://127.0.0.1:" + port + "/", "application/json", "{}", std::chrono::seconds(20)},
      [&](HttpReply result) { reply.set_value(std::move(result)); });
  const HttpReply result = reply.get_future().get();
  if (result.transportError) return result.transportError->code;
  return result.status == 200 ? 0 : -1;
}

/// Of a client that takes whatever there is.
long permissiveStatus(const std::string& port) {
  const std::unique_ptr<CURL, void (*)(CURL*)> client(curl_easy_init(), &curl_easy_cleanup);
  curl_easy_setopt(client.get(), CURLOPT_URL, ("https://127.0.0.1:" + port + "/").c_str());
  curl_easy_setopt(client.get(), CURLOPT_SSL_VERIFYPEER, 0L);
  curl_easy_setopt(client.get(), CURLOPT_SSLVERSION, long{CURL_SSLVERSION_TLSv1_1});
  curl_easy_setopt(client.get(), CURLOPT_SSL_CIPHER_LIST, "DEFAULT:@SECLEVEL=0");
  curl_easy_setopt(client.get(), CURLOPT_POSTFIELDS, "{}");
  curl_easy_setopt(
      client.get(), CURLOPT_WRITEFUNCTION,
      +[](char*, std::size_t size, std::size_t count, void*) { return size * count; });
  long status = 0;
  if (curl_easy_perform(client.get()) != CURLE_OK) return 0;
  curl_easy_getinfo(client.get(), CURLINFO_RESPONSE_CODE, &status);
  return status;
}

TEST(TlsTest, TheServerIsRecognisedAsTheHostSays) {
  TlsServers servers;
  const std::string ca = servers.folder.at("ca.pem");
  const std::string otherPin = "sha256//" + std::string(43, 'A') + "=";
  EXPECT_EQ(outcomeOf({}, servers.usual), CURLE_PEER_FAILED_VERIFICATION);
  EXPECT_EQ(outcomeOf({.caFile = ca}, servers.usual), 0);
  EXPECT_EQ(outcomeOf({.caFile = ca, .pinnedPublicKey = servers.pin}, servers.usual), 0);
  EXPECT_EQ(
      outcomeOf({.caFile = ca, .pinnedPublicKey = otherPin + ";" + servers.pin}, servers.usual), 0);
  EXPECT_EQ(outcomeOf({.caFile = ca, .pinnedPublicKey = otherPin}, servers.usual),
            CURLE_SSL_PINNEDPUBKEYNOTMATCH);
  // A pin does not stand for the certificate.
  EXPECT_EQ(outcomeOf({.pinnedPublicKey = servers.pin}, servers.usual),
            CURLE_PEER_FAILED_VERIFICATION);
  EXPECT_EQ(outcomeOf({.caFile = "/nowhere/ca.pem"}, servers.usual), CURLE_SSL_CACERT_BADFILE);
  EXPECT_EQ(outcomeOf({.caFile = ca, .pinnedPublicKey = "sha256//short"}, servers.usual),
            CURLE_SETOPT_OPTION_SYNTAX);
}

TEST(TlsTest, TheClientShowsItsCertificateWhereOneIsAskedFor) {
  TlsServers servers;
  HttpOptions options{.caFile = servers.folder.at("ca.pem")};
  EXPECT_NE(outcomeOf(options, servers.asking), 0);
  options.clientCertificateFile = servers.folder.at("client.pem");
  options.clientKeyFile = servers.folder.at("client.key");
  options.clientKeyPassphrase = "secret";
  EXPECT_EQ(outcomeOf(options, servers.asking), 0);
  EXPECT_EQ(outcomeOf(options, servers.usual), 0);
  for (const char* wrong : {"wrong", ""}) {
    options.clientKeyPassphrase = wrong;
    EXPECT_EQ(outcomeOf(options, servers.asking), CURLE_SSL_CERTPROBLEM);
  }
}

TEST(TlsTest, OlderThanOneTwoIsRefused) {
  TlsServers servers;
  EXPECT_EQ(permissiveStatus(servers.old), 200);
  EXPECT_EQ(outcomeOf({.caFile = servers.folder.at("ca.pem")}, servers.old),
            CURLE_SSL_CONNECT_ERROR);
}

}  // namespace
}  // namespace quorvance
