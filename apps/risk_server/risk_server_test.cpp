#include "apps/risk_server/risk_server.h"

#include <gtest/gtest.h>

#include <chrono>
#include <ctime>
#include <iterator>

#include "apps/risk_server/http/client_connection.h"
#include "apps/risk_server/http/http_listener.h"
#include "apps/risk_server/http/raw_client.h"
#include "apps/risk_server/served_test_support.h"
#include "apps/risk_server/verdicts/signed_verdict.h"

namespace risk_server {
namespace {

using sample::rawPost;

constexpr const char* kDevicePath = "/qrsk-med/3.0//GetDeviceID/";
constexpr const char* kConfigPath = "/qrsk-med/3.0/getSdkConfiguration/";

RiskServerOptions fixedKey() {
  RiskServerOptions options;
  options.signingKey = "test key";
  return options;
}

class RiskServerTest : public ServedTest {
 protected:
  RiskServerTest() : ServedTest(fixedKey()) {}
};

// std::time() reads a coarser clock than the server's, which may still be in the second before.
std::time_t secondsNow() {
  return std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
}

TEST_F(RiskServerTest, answersAVerdictSignedForTheRequestAndTheDecodedUser) {
  server_.setRules(VerdictRules::fromJson(
      sample::parsed(R"([{"checkpoint": "TRANSACTION", "user": "a b", "risk": "HIGH"}])")));
  const std::time_t before = secondsNow();
  const Received received =
      post(kVerdictPath, sample::checkpointBody(sample::transaction(), "a%20b").dump());
  const std::time_t after = secondsNow();
  ASSERT_EQ(received.code(), 200);
  const Json answer = received.json();
  EXPECT_EQ(answer["risk"], 2);
  EXPECT_EQ(findText(answer, "requestID"), sample::kUuid);
  bool signedInTime = false;
  for (std::time_t at = before; at <= after; ++at) {
    const std::string expected = signVerdict({2, sample::kUuid, "a b", at}, "test key");
    signedInTime = signedInTime || findText(answer, "signedRisk") == expected;
  }
  EXPECT_TRUE(signedInTime) << answer.dump();
}

TEST_F(RiskServerTest, refusesWithAReasonAndLogsIt) {
  Json wrong = sample::checkpointBody(sample::transaction());
  wrong["keys"]["requestID"] = "x";
  const Received answer = post(kVerdictPath, wrong.dump());
  EXPECT_EQ(answer.code(), 400);
  const std::string reason = "keys.requestID: expected an upper-case UUID, got \"x\"";
  EXPECT_EQ(findText(answer.json(), "error"), reason);
  EXPECT_EQ(server_.exchanges().front().fault, reason);
  EXPECT_EQ(post(kVerdictPath, "[]").code(), 400);
  EXPECT_EQ(post(kVerdictPath, "\xff").code(), 400);
  const std::string device = sample::deviceIdentifierBody().dump();
  EXPECT_EQ(post("/qrsk-med/3.0/GetDeviceID/", device).code(), 404);
  EXPECT_EQ(get(kVerdictPath).code(), 405);
  EXPECT_EQ(server_.tally().refused, 5U);
}

TEST_F(RiskServerTest, routesAndLogsTheTargetAsItCame) {
  const std::string body = sample::deviceIdentifierBody().dump();
  EXPECT_EQ(findText(post(kDevicePath, body).json(), "response.deviceID"),
            deviceIdentifier(sample::kUuid, "test key"));
  const std::string disguised = "/qrsk-med/3.0//Get%44eviceID/#x";
  EXPECT_EQ(post(disguised, body).code(), 404);
  const auto exchanges = server_.exchanges();
  ASSERT_EQ(exchanges.size(), 2U);
  EXPECT_EQ(exchanges[0].path, kDevicePath);
  EXPECT_EQ(exchanges[0].request, body);
  EXPECT_EQ(exchanges[1].path, disguised);
}

TEST_F(RiskServerTest, answersWhatIsNoWholeRequestAndGoesOn) {
  const struct {
    std::string bytes;
    int code;
  } kCases[] = {
      {"nonsense\r\n\r\n", 400},
      {"POST /" + std::string(20'000, 'x') + " HTTP/1.1\r\n\r\n", 414},
      {rawPost(kVerdictPath, "{}").substr(0, 120), 400},
      {"POST / HTTP/1.1\r\nContent-Length: 99999999999\r\n\r\n", 413},
      {"POST / HTTP/1.1\r\nContent-Length: 1\r\nContent-Length: 2\r\n\r\nxy", 400},
      {"POST / HTTP/1.1\r\nContent-Length: 1\r\nTransfer-Encoding: chunked\r\n\r\nx", 400},
      {"POST / HTTP/1.1\r\nContent-Encoding: gzip\r\nContent-Length: 1\r\n\r\nx", 415},
      {"POST / HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\n", 400},
  };
  for (const auto& sent : kCases) {
    const Received answer = callWith(sent.bytes, true);
    EXPECT_EQ(answer.code(), sent.code) << sent.bytes.substr(0, 40);
    EXPECT_TRUE(answer.body.starts_with("{\"error\":")) << answer.body;
  }
  EXPECT_TRUE(server_.waitForRefusals(std::size(kCases), kTestTimeout));
  EXPECT_EQ(get("/control/health").code(), 200);
}

TEST(HttpListenerTest, aHeadThatNeverEndsFreesItsWorker) {
  HttpListener listener([](const HttpRequest&) { return HttpReply(); }, [] { return true; }, {},
                        {.workers = 1, .head = std::chrono::milliseconds(50)});
  listener.start(0);
  const std::string url = "http://127.0.0.1:" + std::to_string(listener.port()) + "/";
  const auto begin = std::chrono::steady_clock::now();
  sample::RawClient half(url);
  half.send("GET / HTTP/1.1\r\nHost:");
  sample::RawClient whole(url);
  whole.send("GET / HTTP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n");
  EXPECT_TRUE(whole.receiveAll().starts_with("HTTP/1.1 200"));
  EXPECT_LT(std::chrono::steady_clock::now() - begin, kTransferTimeout / 2);
}

TEST_F(RiskServerTest, boundsABodyWithoutAnnouncedLength) {
  std::string chunks;
  const std::string chunk = "100000\r\n" + std::string(0x100000, 'x') + "\r\n";
  for (std::size_t sent = 0; sent <= kMaxBodyBytes; sent += 0x100000) chunks += chunk;
  const std::string head = "POST / HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n";
  EXPECT_EQ(callWith(head + chunks + "0\r\n\r\n", true).code(), 413);
}

TEST_F(RiskServerTest, controlReplacesConfigurationAndRulesAndIsNotCounted) {
  const std::string common = sample::commonBody().dump();
  const std::string checkpoint = sample::checkpointBody(sample::transaction()).dump();
  EXPECT_EQ(post("/control/config", R"({"app_run_mode": 7})").code(), 200);
  EXPECT_EQ(post(kConfigPath, common).body, R"({"app_run_mode":7})");
  EXPECT_EQ(post("/control/rules", R"([{"risk": "expire"}])").code(), 200);
  EXPECT_EQ(post(kVerdictPath, checkpoint).json()["risk"], -2);
  EXPECT_EQ(findText(post("/control/rules", R"([{"risk": 5}])").json(), "error"),
            "[0].risk: expected a text, got 5");
  EXPECT_EQ(post("/control/config", "[]").code(), 400);
  EXPECT_EQ(get("/control/config").body, R"({"app_run_mode":7})");
  EXPECT_EQ(get("/control/rules").body, R"([{"risk":"expire"}])");
  EXPECT_EQ(get("/control/other").code(), 404);
  EXPECT_EQ(get("/control/tally").body, R"({"calls":{"/qrsk-med/3.0/GetCheckpointRisk/":1,)"
                                        R"("/qrsk-med/3.0/getSdkConfiguration/":1},"refused":0})");
}

TEST_F(RiskServerTest, replacesOnlyTheVersionThatIsAskedFor) {
  const auto replaceIf = [&](const std::string& path, const std::string& tag, const char* body) {
    return post(path, body, "If-Match: " + tag + "\r\n").code();
  };
  const std::pair<const char*, const char*> kReplaceable[] = {
      {"/control/rules", "[]"}, {"/control/config", "{}"}, {"/control/faults", "[]"}};
  for (const auto& [path, body] : kReplaceable) {
    const std::string tag = get(path).header("ETag");
    EXPECT_EQ(replaceIf(path, tag, body), 200) << path;
    EXPECT_EQ(replaceIf(path, tag, body), 412) << path;
    EXPECT_EQ(replaceIf(path, "1", body), 400) << path;
    EXPECT_NE(get(path).header("ETag"), tag) << path;
  }
}

TEST_F(RiskServerTest, aDryRunTellsWhatOtherRulesChange) {
  const std::string candidate = R"([{"checkpoint": "TRANSACTION", "nth": 2, "risk": "HIGH"},
                                    {"risk": "MEDIUM"}])";
  const auto play = [&] {
    std::string risks;
    for (const Json& checkpoint : {sample::plainCheckpoint("GENERAL"), sample::transaction(),
                                   sample::transaction(), sample::transaction()}) {
      const std::string body = sample::checkpointBody(checkpoint).dump();
      risks += post(kVerdictPath, body).json()["risk"].dump();
    }
    return risks;
  };
  EXPECT_EQ(play(), "0111");
  post(kVerdictPath, "{}");
  EXPECT_EQ(post("/control/rules/check", candidate).body,
            R"({"replayed":4,"changed":2,"changes":[{"id":1,"from":0,"to":1,"rule":1},)"
            R"({"id":3,"from":1,"to":2,"rule":0}],"hits":[1,3]})");
  EXPECT_EQ(get("/control/rules").json().size(), 10U);
  EXPECT_EQ(post("/control/rules", candidate).code(), 200);
  EXPECT_EQ(play(), "1121");
  EXPECT_EQ(get("/control/state").json()["rules"].dump(),
            R"({"version":2,"hits":[1,3],"undecided":0})");
  EXPECT_EQ(findText(post("/control/rules/check", R"([{"risk": 5}])").json(), "error"),
            "[0].risk: expected a text, got 5");
  EXPECT_EQ(
      post("/control/faults/check", R"([{"path": "*", "status": 503, "skip": 7, "times": 1}])")
          .json()["changes"]
          .dump(),
      R"([{"id":8,"fault":"status"}])");
  EXPECT_EQ(server_.faults(), Json::array());
}

}  // namespace
}  // namespace risk_server
