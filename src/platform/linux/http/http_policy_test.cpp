#include "platform/linux/http/http_policy.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "platform/testing/test_world.h"

namespace quorvance {
namespace {

const std::string kPin = "sha256//" + std::string(43, 'A') + "=";

TEST(HttpPolicyTest, OnlyUsableOptionsPass) {
  const HttpOptions good[] = {
      {},
      {.pinnedPublicKey = kPin},
      {.pinnedPublicKey = kPin + ";" + kPin},
      {.clientCertificateFile = "c", .clientKeyFile = "k", .clientKeyPassphrase = "p"},
      {.proxyUrl = "http://proxy:3128"},
      {.proxyUrl = "SOCKS5h://u:p@[::1]:1080/"},
  };
  for (const HttpOptions& options : good) EXPECT_EQ(faultOfOptions(options), "");
  const HttpOptions bad[] = {
      {.caFile = std::string("a\0b", 3)},
      {.pinnedPublicKey = "key.pem"},
      {.pinnedPublicKey = "sha256//AAAA"},
      {.pinnedPublicKey = kPin + ";"},
      {.pinnedPublicKey = "sha256//" + std::string(43, '*') + "="},
      {.clientKeyFile = "k"},
      {.clientKeyPassphrase = "p"},
      {.proxyUrl = "proxy:3128"},
      {.proxyUrl = "ftp://proxy"},
      {.proxyUrl = "http://:3128"},
      {.proxyUrl = "http://u@"},
      {.proxyUrl = "http://a b"},
  };
  for (const HttpOptions& options : bad) {
    EXPECT_NE(faultOfOptions(options), "") << options.pinnedPublicKey << options.proxyUrl;
    EXPECT_NE(HttpPolicy(options).faultOf("https://risk.test/"), "");
    EXPECT_NE(HttpPolicy(options).faultOf("http://localhost/"), "");
  }
}

TEST(HttpPolicyTest, PlainHttpToOthersIsToldOnceAServerAndRefusedBesideTls) {
  const DebugLines debug;
  HttpPolicy policy{HttpOptions{}};
  for (const char* url : {"http://localhost/", "HTTP://LOCALHOST:80/a", "http://a.localhost",
                          "http://127.9.8.7:1/", "http://[::1]:8/", "https://risk.test/"}) {
    EXPECT_EQ(policy.faultOf(url), "") << url;
  }
  EXPECT_EQ(debug.lines().size(), 0U);
  for (const char* url : {"http://risk.test/a", "HTTP://risk.test/b", "http://risk.test:81/a",
                          "http://127.evil.test/", "http://localhost.test/", "http://[::2]/"}) {
    EXPECT_EQ(policy.faultOf(url), "") << url;
    EXPECT_NE(HttpPolicy({.caFile = "ca"}).faultOf(url), "") << url;
    EXPECT_NE(HttpPolicy({.pinnedPublicKey = kPin}).faultOf(url), "") << url;
    EXPECT_NE(HttpPolicy({.clientCertificateFile = "c"}).faultOf(url), "") << url;
    EXPECT_EQ(HttpPolicy({.caFile = "ca", .allowHttp = true}).faultOf(url), "") << url;
  }
  const auto lines = debug.lines();
  EXPECT_EQ(std::count_if(lines.begin(), lines.end(),
                          [](const auto& line) { return line.ends_with("in plain text"); }),
            5);
}

}  // namespace
}  // namespace quorvance
