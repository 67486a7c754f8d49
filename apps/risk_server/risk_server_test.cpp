#include "apps/risk_server/risk_server.h"

#include <gtest/gtest.h>
#include <httplib.h>

#include <csignal>
#include <ctime>
#include <iterator>
#include <thread>

#include "apps/risk_server/http/http_listener.h"
#include "apps/risk_server/http/raw_client.h"
#include "apps/risk_server/sample_bodies.h"
#include "apps/risk_server/verdicts/signed_verdict.h"

namespace risk_server {
namespace {

using sample::rawPost;

constexpr const char* kRiskPath = "/qrsk-med/3.0/GetCheckpointRisk/";
constexpr const char* kDevicePath = "/qrsk-med/3.0//GetDeviceID/";
constexpr const char* kConfigPath = "/qrsk-med/3.0/getSdkConfiguration/";
constexpr std::chrono::seconds kTestTimeout{30};

struct Answer {
  int status = -1;
  Json body;
};

class RiskServerTest : public testing::Test {
 protected:
  RiskServerTest() : server_(fixedKey()) { server_.start(); }

  static RiskServerOptions fixedKey() {
    RiskServerOptions options;
    options.signingKey = "test key";
    return options;
  }

  std::unique_ptr<httplib::Client> client() const {
    std::string url = server_.url();
    url.pop_back();
    auto made = std::make_unique<httplib::Client>(url);
    made->set_keep_alive(true);
    made->set_url_encode(false);
    made->set_tcp_nodelay(true);
    return made;
  }

  static Answer answerOf(const httplib::Result& result) {
    if (!result) return {};
    return {result->status, sample::parsed(result->body)};
  }

  Answer post(const std::string& path, const std::string& body) const {
    return answerOf(client()->Post(path, body, sample::kContentType));
  }
  Answer post(const std::string& path, const Json& body) const { return post(path, body.dump()); }
  Answer get(const std::string& path) const { return answerOf(client()->Get(path)); }

  // Sends the bytes on a connection of their own and reads until the server closes it.
  std::string exchangeRaw(const std::string& bytes) const;

  RiskServer server_;
};

std::string RiskServerTest::exchangeRaw(const std::string& bytes) const {
  sample::RawClient raw(server_.url());
  if (!raw.send(bytes)) return {};
  raw.endSending();
  return raw.receiveAll();
}

// std::time() reads a coarser clock than the server's, which may still be in the second before.
std::time_t secondsNow() {
  return std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
}

TEST_F(RiskServerTest, givesADeviceAlwaysTheSameIdentifier) {
  const Answer answer = post(kDevicePath, sample::deviceIdentifierBody());
  EXPECT_EQ(answer.status, 200);
  EXPECT_EQ(findText(answer.body, "response.deviceID"),
            deviceIdentifier(sample::kUuid, "test key"));
  EXPECT_EQ(post(kDevicePath, sample::deviceIdentifierBody()).body, answer.body);
}

TEST_F(RiskServerTest, answersAVerdictSignedForTheRequestAndTheDecodedUser) {
  server_.setRules(VerdictRules::fromJson(
      sample::parsed(R"([{"checkpoint": "TRANSACTION", "user": "a b", "risk": "HIGH"}])")));
  const std::time_t before = secondsNow();
  const Answer answer = post(kRiskPath, sample::checkpointBody(sample::transaction(), "a%20b"));
  const std::time_t after = secondsNow();
  ASSERT_EQ(answer.status, 200);
  EXPECT_EQ(answer.body["risk"], 2);
  EXPECT_EQ(findText(answer.body, "requestID"), sample::kUuid);
  bool signedInTime = false;
  for (std::time_t at = before; at <= after; ++at) {
    const std::string expected = signVerdict({2, sample::kUuid, "a b", at}, "test key");
    signedInTime = signedInTime || findText(answer.body, "signedRisk") == expected;
  }
  EXPECT_TRUE(signedInTime) << answer.body.dump();
}

TEST_F(RiskServerTest, refusesWithAReasonAndLogsIt) {
  Json wrong = sample::checkpointBody(sample::transaction());
  wrong["keys"]["requestID"] = "x";
  const Answer answer = post(kRiskPath, wrong);
  EXPECT_EQ(answer.status, 400);
  EXPECT_EQ(findText(answer.body, "error"),
            "keys.requestID: expected an upper-case UUID, got \"x\"");
  EXPECT_EQ(post(kRiskPath, std::string("[]")).status, 400);
  EXPECT_EQ(post(kRiskPath, std::string(1000, '[')).status, 400);
  EXPECT_EQ(post(kRiskPath, std::string("\xff")).status, 400);
  EXPECT_EQ(post("/qrsk-med/3.0/GetDeviceID/", sample::deviceIdentifierBody()).status, 404);
  EXPECT_EQ(get(kRiskPath).status, 405);
  EXPECT_EQ(answerOf(client()->Put(kRiskPath, "{}", sample::kContentType)).status, 405);
  EXPECT_EQ(answerOf(client()->Post(kRiskPath, "{}", "application/json")).status, 400);
  EXPECT_EQ(server_.tally().refused, 8U);
  EXPECT_EQ(server_.exchanges().front().fault, *findText(answer.body, "error"));
}

TEST_F(RiskServerTest, routesAndLogsTheTargetAsItCame) {
  const std::string body = sample::deviceIdentifierBody().dump();
  EXPECT_NE(exchangeRaw(rawPost(kDevicePath, body)).find("deviceID"), std::string::npos);
  const std::string disguised = "/qrsk-med/3.0//Get%44eviceID/#x";
  EXPECT_NE(exchangeRaw(rawPost(disguised, body)).find(" 404 "), std::string::npos);
  const auto exchanges = server_.exchanges();
  ASSERT_EQ(exchanges.size(), 2U);
  EXPECT_EQ(exchanges[0].path, kDevicePath);
  EXPECT_EQ(exchanges[0].request, body);
  EXPECT_EQ(exchanges[1].path, disguised);
}

TEST_F(RiskServerTest, answersWhatIsNoWholeRequestAndGoesOn) {
  const struct {
    std::string bytes;
    const char* status;
  } kCases[] = {
      {"nonsense\r\n\r\n", " 400 "},
      {"POST /" + std::string(20'000, 'x') + " HTTP/1.1\r\n\r\n", " 414 "},
      {"TRACE " + std::string(kRiskPath) + " HTTP/1.1\r\n\r\n", " 405 "},
      {rawPost(kRiskPath, "{}").substr(0, 120), " 400 "},
      {"POST / HTTP/1.1\r\nContent-Length: 99999999999\r\n\r\n", " 413 "},
      {"POST / HTTP/1.1\r\nContent-Encoding: gzip\r\nContent-Length: 1\r\n\r\nx", " 415 "},
      {"POST / HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\n", " 400 "},
  };
  for (const auto& sent : kCases) {
    const std::string answer = exchangeRaw(sent.bytes);
    EXPECT_EQ(answer.substr(8, 5), sent.status) << sent.bytes.substr(0, 40);
    EXPECT_NE(answer.find("{\"error\":"), std::string::npos) << answer;
  }
  EXPECT_TRUE(server_.waitForRefusals(std::size(kCases), kTestTimeout));
  EXPECT_EQ(get("/control/health").status, 200);
}

TEST_F(RiskServerTest, boundsABodyWithoutAnnouncedLength) {
  std::string chunks;
  const std::string chunk = "100000\r\n" + std::string(0x100000, 'x') + "\r\n";
  for (std::size_t sent = 0; sent <= kMaxBodyBytes; sent += 0x100000) chunks += chunk;
  const std::string head = "POST / HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n";
  EXPECT_EQ(exchangeRaw(head + chunks + "0\r\n\r\n").substr(8, 5), " 413 ");
}

TEST_F(RiskServerTest, keepsAConnectionForManyCalls) {
  const std::string call = rawPost(kDevicePath, sample::deviceIdentifierBody().dump());
  std::string calls;
  for (int i = 0; i < 100; ++i) calls += call;
  exchangeRaw(calls);
  EXPECT_EQ(server_.tally().calls[kDevicePath], 100U);
  EXPECT_EQ(server_.tally().refused, 0U);
}

TEST_F(RiskServerTest, controlReplacesConfigurationAndRulesAndIsNotCounted) {
  EXPECT_EQ(post("/control/config", std::string(R"({"app_run_mode": 7})")).status, 200);
  EXPECT_EQ(post(kConfigPath, sample::commonBody()).body.dump(), R"({"app_run_mode":7})");
  EXPECT_EQ(post("/control/rules", std::string(R"([{"risk": "expire"}])")).status, 200);
  EXPECT_EQ(post(kRiskPath, sample::checkpointBody(sample::transaction())).body["risk"], -2);
  EXPECT_EQ(findText(post("/control/rules", std::string(R"([{"risk": 5}])")).body, "error"),
            "[0].risk: expected a text, got 5");
  EXPECT_EQ(post("/control/config", std::string("[]")).status, 400);
  EXPECT_EQ(get("/control/config").body.dump(), R"({"app_run_mode":7})");
  EXPECT_EQ(get("/control/rules").body.dump(), R"([{"risk":"expire"}])");
  EXPECT_EQ(get("/control/other").status, 404);
  EXPECT_EQ(post(kConfigPath, sample::commonBody()).body.dump(), R"({"app_run_mode":7})");
  EXPECT_EQ(get("/control/tally").body.dump(),
            R"({"calls":{"/qrsk-med/3.0/GetCheckpointRisk/":1,)"
            R"("/qrsk-med/3.0/getSdkConfiguration/":2},"refused":0})");
}

TEST_F(RiskServerTest, replacesOnlyTheVersionThatIsAskedFor) {
  const auto replaceIf = [&](const std::string& path, const std::string& tag, const char* body) {
    return answerOf(client()->Post(path, {{"If-Match", tag}}, body, sample::kContentType)).status;
  };
  const std::pair<const char*, const char*> kReplaceable[] = {
      {"/control/rules", "[]"}, {"/control/config", "{}"}, {"/control/faults", "[]"}};
  for (const auto& [path, body] : kReplaceable) {
    const std::string tag = client()->Get(path)->get_header_value("ETag");
    EXPECT_EQ(replaceIf(path, tag, body), 200) << path;
    EXPECT_EQ(replaceIf(path, tag, body), 412) << path;
    EXPECT_EQ(replaceIf(path, "1", body), 400) << path;
    EXPECT_NE(client()->Get(path)->get_header_value("ETag"), tag) << path;
  }
}

TEST_F(RiskServerTest, aDryRunTellsWhatOtherRulesChange) {
  const std::string candidate = R"([{"checkpoint": "TRANSACTION", "nth": 2, "risk": "HIGH"},
                                    {"risk": "MEDIUM"}])";
  const auto play = [&] {
    std::string risks;
    for (const Json& checkpoint : {sample::plainCheckpoint("GENERAL"), sample::transaction(),
                                   sample::transaction(), sample::transaction()}) {
      risks += post(kRiskPath, sample::checkpointBody(checkpoint)).body["risk"].dump();
    }
    return risks;
  };
  EXPECT_EQ(play(), "0111");
  post(kRiskPath, std::string("{}"));
  const Json dryRun = post("/control/rules/check", candidate).body;
  EXPECT_EQ(dryRun.dump(),
            R"({"replayed":4,"changed":2,"changes":[{"id":1,"from":0,"to":1,"rule":1},)"
            R"({"id":3,"from":1,"to":2,"rule":0}],"hits":[1,3]})");
  EXPECT_EQ(get("/control/rules").body.size(), 10U);
  EXPECT_EQ(post("/control/rules", candidate).status, 200);
  EXPECT_EQ(play(), "1121");
  EXPECT_EQ(get("/control/state").body["rules"].dump(),
            R"({"version":2,"hits":[1,3],"undecided":0})");
  EXPECT_EQ(findText(post("/control/rules/check", std::string(R"([{"risk": 5}])")).body, "error"),
            "[0].risk: expected a text, got 5");
  EXPECT_EQ(post("/control/faults/check",
                 std::string(R"([{"path": "*", "status": 503, "skip": 7, "times": 1}])"))
                .body["changes"]
                .dump(),
            R"([{"id":8,"fault":"status"}])");
  EXPECT_EQ(server_.faults(), Json::array());
}

TEST_F(RiskServerTest, servesManyClientsAtOnce) {
  std::vector<std::thread> clients;
  for (int i = 0; i < 16; ++i) {
    clients.emplace_back([&] {
      const auto own = client();
      const std::string body = sample::checkpointBody(sample::transaction()).dump();
      for (int call = 0; call < 20; ++call) own->Post(kRiskPath, body, sample::kContentType);
    });
  }
  EXPECT_TRUE(server_.waitForCalls(kRiskPath, 320, kTestTimeout));
  for (std::thread& thread : clients) thread.join();
}

TEST_F(RiskServerTest, stopsAtOnceThoughConnectionsAreKept) {
  const auto kept = client();
  EXPECT_TRUE(kept->Get("/control/health"));
  const auto begin = std::chrono::steady_clock::now();
  server_.stop();
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
  EXPECT_FALSE(kept->Get("/control/health"));
}

TEST(RiskServerStartTest, refusesAPortThatIsTaken) {
  RiskServer first;
  first.start();
  const std::string url = first.url();
  RiskServerOptions options;
  options.port = std::stoi(url.substr(url.rfind(':') + 1));
  RiskServer second(std::move(options));
  EXPECT_THROW(second.start(), std::system_error);
}

TEST(RiskServerStartTest, leavesTheProcessesOwnSignalHandling) {
  struct sigaction before {};
  struct sigaction after {};
  sigaction(SIGPIPE, nullptr, &before);
  const RiskServer server;
  sigaction(SIGPIPE, nullptr, &after);
  EXPECT_EQ(before.sa_handler, after.sa_handler);
}

}  // namespace
}  // namespace risk_server
