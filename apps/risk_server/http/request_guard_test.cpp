#include "apps/risk_server/http/request_guard.h"

#include <gtest/gtest.h>

#include "apps/risk_server/http/raw_client.h"
#include "apps/risk_server/risk_server.h"

namespace risk_server {
namespace {

class RequestGuardTest : public testing::Test {
 protected:
  void startWith(GuardOptions guard) {
    RiskServerOptions options;
    options.guard = std::move(guard);
    server_ = std::make_unique<RiskServer>(std::move(options));
    server_->start();
    const std::string url = server_->url();
    port_ = url.substr(url.rfind(':') + 1, url.size() - url.rfind(':') - 2);
  }

  // The status of a request with these header lines; "PORT" stands for the server's.
  std::string statusOf(const std::string& method, const std::string& target, std::string lines) {
    for (auto at = lines.find("PORT"); at != std::string::npos; at = lines.find("PORT")) {
      lines.replace(at, 4, port_);
    }
    const std::string body = method == "POST" ? R"([{"path":"*","hang":true}])" : "";
    sample::RawClient client(server_->url());
    client.send(method + " " + target + " HTTP/1.1\r\nConnection: close\r\n" + lines +
                "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body);
    return client.receiveAll().substr(9, 3);
  }

  std::unique_ptr<RiskServer> server_;
  std::string port_;
};

TEST_F(RequestGuardTest, noOtherOriginReachesTheControlPath) {
  startWith({});
  const struct {
    const char* target;
    const char* lines;
  } kRefused[] = {
      {"/control/faults", ""},
      {"/control/faults", "Host: evil.example:PORT\r\n"},
      {"/control/faults", "Host: 127.0.0.1\r\n"},
      {"/control/faults", "Host: 127.0.0.1:1\r\n"},
      {"/control/faults", "Host: 127.0.0.1.evil.example:PORT\r\n"},
      {"/control/faults", "Host: 127.0.0.1:PORT\r\nHost: evil.example:PORT\r\n"},
      {"/control/faults", "Host: 127.0.0.1:PORT\r\nOrigin: http://evil.example\r\n"},
      {"/control/faults", "Host: 127.0.0.1:PORT\r\nOrigin: null\r\n"},
      {"/control/faults", "Host: 127.0.0.1:PORT\r\nOrigin: http://127.0.0.1:1\r\n"},
      {"/control/faults", "Host: 127.0.0.1:PORT\r\nOrigin: http://localhost:PORT\r\n"},
      {"/control/faults", "Host: 127.0.0.1:PORT\r\nOrigin: https://127.0.0.1:PORT\r\n"},
      {"/control/faults", "Host: 127.0.0.1:PORT\r\nSec-Fetch-Site: cross-site\r\n"},
      {"/control/faults", "Host: 127.0.0.1:PORT\r\nSec-Fetch-Site: same-site\r\n"},
      {"/control%2ffaults", "Host: 127.0.0.1:PORT\r\n"},
      {"/%63ontrol/faults", "Host: 127.0.0.1:PORT\r\n"},
      {"//control/faults", "Host: 127.0.0.1:PORT\r\n"},
      {"/control/faults%2f", "Host: evil.example:PORT\r\n"},
      {"/control/./faults", "Host: 127.0.0.1:PORT\r\n"},
  };
  for (const auto& asked : kRefused) {
    EXPECT_EQ(statusOf("POST", asked.target, asked.lines), "403") << asked.target << asked.lines;
  }
  EXPECT_EQ(statusOf("GET", "/control/faults", "Host: evil.example:PORT\r\n"), "403");
  EXPECT_EQ(server_->faults(), Json::array());
  EXPECT_EQ(server_->tally().refused, 0U);
}

TEST_F(RequestGuardTest, programsAndTheOwnPagePass) {
  startWith({{"lab.example"}, ""});
  for (const char* lines : {"Host: 127.0.0.1:PORT\r\n", "Host: localhost:PORT\r\n",
                            "Host: lab.example:PORT\r\nOrigin: http://lab.example:PORT\r\n",
                            ("Host: 127.0.0.1:PORT\r\nOrigin: http://127.0.0.1:PORT\r\n"
                             "Sec-Fetch-Site: same-origin\r\n"),
                            "Host: 127.0.0.1:PORT\r\nSec-Fetch-Site: none\r\n"}) {
    EXPECT_EQ(statusOf("POST", "/control/faults", lines), "200") << lines;
    ASSERT_EQ(server_->faults().size(), 1U) << lines;
    server_->clearFaults();
  }
}

TEST_F(RequestGuardTest, theTokenIsAskedForWhereThereIsOne) {
  startWith({{}, "s3cret"});
  const std::string host = "Host: 127.0.0.1:PORT\r\n";
  EXPECT_EQ(statusOf("GET", "/control/tally", host), "401");
  EXPECT_EQ(statusOf("GET", "/control/tally", host + "Authorization: Bearer s3creT\r\n"), "401");
  EXPECT_EQ(statusOf("GET", "/control/tally", host + "Authorization: Bearer s3cret\r\n"), "200");
  EXPECT_EQ(statusOf("GET", "/control/health", host), "200");
}

TEST_F(RequestGuardTest, aBrowsersOwnRequestsAreNoCalls) {
  startWith({});
  EXPECT_EQ(statusOf("GET", "/favicon.ico", "Host: x\r\n"), "204");
  EXPECT_EQ(statusOf("GET", "/", "Host: x\r\n"), "404");
  EXPECT_EQ(server_->tally().refused, 0U);
  EXPECT_TRUE(server_->exchanges().empty());
  EXPECT_EQ(statusOf("POST", "/", "Host: x\r\n"), "404");
  EXPECT_EQ(server_->tally().refused, 1U);
}

}  // namespace
}  // namespace risk_server
