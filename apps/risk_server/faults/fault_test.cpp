#include "apps/risk_server/faults/fault.h"

#include <gtest/gtest.h>

#include <list>
#include <vector>

#include "apps/risk_server/served_test_support.h"

namespace risk_server {
namespace {

using sample::Ending;
using sample::kEnrichPath;
using sample::RawClient;
using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr const char* kOkBody = R"({"response":"OK"})";
// Long enough that no test would pass by waiting for it.
constexpr const char* kVeryLate = R"([{"path": "*", "latency": 600000}])";

class FaultTest : public ServedTest {
 protected:
  static std::string enrichCall(const std::string& headers = "Connection: close\r\n") {
    return sample::rawPost(kEnrichPath, sample::commonBody().dump(), headers);
  }
  Received call() const { return callWith(enrichCall()); }
  // What the server tells of its newest exchange. It is told to readers in the order of changes.
  std::string deliveryOfLast() const {
    return findText(get("/control/exchanges").json()["rows"].back(), "delivery")
        .value_or("under way");
  }
  // The limit is for slow machines, and less than any reply would be held back.
  bool stopsAtOnce() {
    const auto begin = Clock::now();
    server_.stop();
    return Clock::now() - begin < std::chrono::seconds(5);
  }
};

TEST_F(FaultTest, repliesWithTheStatusAndBodyThatAreAskedFor) {
  const struct {
    const char* keys;
    const char* status;
    std::string body;
  } kCases[] = {
      {R"("status": 201)", "HTTP/1.1 201 Created", kOkBody},
      {R"("status": 204)", "HTTP/1.1 204 No Content", ""},
      {R"("status": 500, "emptyBody": true)", "HTTP/1.1 500 Internal Server Error", ""},
      {R"("body": "no JSON \u00e9")", "HTTP/1.1 200 OK", "no JSON \xc3\xa9"},
      {R"("bodyBytes": "7bff7d")", "HTTP/1.1 200 OK", "{\xff}"},
      {R"("reply": {"response": "no"})", "HTTP/1.1 200 OK", R"({"response":"no"})"},
      {R"("nested": 100000)", "HTTP/1.1 200 OK",
       std::string(100000, '[') + std::string(100000, ']')},
  };
  for (const auto& asked : kCases) {
    server_.setFaults(R"([{"path": "*", )" + std::string(asked.keys) + "}]");
    const Received received = call();
    EXPECT_EQ(received.status(), asked.status) << asked.keys;
    EXPECT_TRUE(received.body == asked.body) << received.body.substr(0, 100);
    EXPECT_EQ(received.ending, Ending::kClosed);
  }
}

TEST_F(FaultTest, breaksTheConnectionTheWayThatIsAskedFor) {
  const struct {
    const char* keys;
    Ending ending;
    std::string body;
    bool hasHead;
    const char* delivery;
  } kCases[] = {
      {R"("resetBeforeReply": true)", Ending::kReset, "", false, "reset"},
      {R"("closeWithoutReply": true)", Ending::kClosed, "", false, "closed"},
      {R"("resetInBody": 5)", Ending::kReset, R"({"res)", true, "reset"},
      {R"("cutBody": 5)", Ending::kClosed, R"({"res)", true, "cut"},
      {R"("cutBody": 1000)", Ending::kClosed, R"({"response":"OK")", true, "cut"},
      {R"("cutBody": 2, "body": "abc", "status": 500)", Ending::kClosed, "ab", true, "cut"},
  };
  for (const auto& asked : kCases) {
    server_.setFaults(R"([{"path": "*", )" + std::string(asked.keys) + "}]");
    // The client would keep the connection.
    const Received received = callWith(enrichCall(""));
    EXPECT_EQ(received.ending, asked.ending) << asked.keys;
    EXPECT_EQ(received.body, asked.body) << asked.keys;
    EXPECT_EQ(deliveryOfLast(), asked.delivery) << asked.keys;
    const auto length = received.head.find("Content-Length: ");
    ASSERT_EQ(length != std::string::npos, asked.hasHead) << asked.keys;
    if (!asked.hasHead) continue;
    EXPECT_GT(std::stoul(received.head.substr(length + 16)), received.body.size()) << asked.keys;
  }
}

TEST_F(FaultTest, latencyDelaysItsOwnReplyAndNoOther) {
  server_.setFaults(kVeryLate);
  std::list<RawClient> late;
  for (int i = 0; i < 16; ++i) late.emplace_back(server_.url()).send(enrichCall());
  ASSERT_TRUE(server_.waitForAppliedFaults(16, kTestTimeout));
  server_.setFaults(R"([{"path": "*", "latency": 50}])");
  const auto begin = Clock::now();
  const Received received = call();
  EXPECT_GE(Clock::now() - begin, milliseconds(50));
  EXPECT_EQ(received.body, kOkBody);
  server_.clearFaults();
  EXPECT_EQ(call().body, kOkBody);
}

TEST_F(FaultTest, tricklesTheBodyAndKeepsTheConnection) {
  server_.setFaults(R"([{"path": "*", "trickle": 40, "body": "0123456789", "times": 1}])");
  RawClient client(server_.url());
  const auto begin = Clock::now();
  client.send(enrichCall(""));
  EXPECT_TRUE(client.receiveUntil("\r\n\r\n0123456789").ends_with("0123456789"));
  // Pieces of 4 bytes, a tenth of a second apart: the third comes after two tenths.
  EXPECT_GE(Clock::now() - begin, milliseconds(200));
  client.send(enrichCall());
  EXPECT_NE(client.receiveAll().find(kOkBody), std::string::npos);
}

TEST_F(FaultTest, closesConnectionsAsTheyComeAndServesTheNext) {
  server_.setFaults(R"([{"path": "*", "acceptAndClose": true, "times": 1, "name": "shut"}])");
  RawClient first(server_.url());
  EXPECT_EQ(first.receiveAll(), "");
  EXPECT_EQ(first.ending(), Ending::kClosed);
  EXPECT_EQ(call().body, kOkBody);
  EXPECT_EQ(server_.exchanges().front().faultInjected, "shut");
  EXPECT_EQ(server_.tally().calls, (std::map<std::string, std::uint64_t>{{kEnrichPath, 1}}));
}

TEST_F(FaultTest, logsTheFaultBesideWhatTheCallWas) {
  server_.setFaults(R"([{"path": "*", "resetBeforeReply": true, "times": 1},
                        {"path": "*", "status": 503, "times": 1}])");
  call();
  post(kVerdictPath, "[]");
  const auto exchanges = server_.exchanges();
  ASSERT_EQ(exchanges.size(), 2U);
  const Json lost = exchangeToJson(exchanges[0]);
  EXPECT_EQ(findText(lost, "faultInjected"), "resetBeforeReply");
  EXPECT_EQ(lost["status"], 0);
  EXPECT_EQ(lost["reply"], "");
  const Json refused = exchangeToJson(exchanges[1]);
  EXPECT_EQ(findText(refused, "faultInjected"), "status");
  EXPECT_EQ(refused["status"], 503);
  EXPECT_EQ(findText(refused, "fault"), "the body: expected an object, got an array of 0");
  EXPECT_EQ(server_.tally().calls.at(kEnrichPath), 1U);
  EXPECT_EQ(server_.tally().refused, 1U);
}

TEST_F(FaultTest, stopsAtOnceWhileRepliesAreHeldBack) {
  server_.setFaults(R"([{"path": "*", "hang": true, "times": 1},
                        {"path": "*", "latency": 600000, "times": 1},
                        {"path": "*", "trickle": 1, "times": 1},
                        {"path": "*", "oversize": 33554432, "latency": 1}])");
  std::list<RawClient> clients;
  for (std::uint64_t i = 1; i <= 4; ++i) {
    clients.emplace_back(server_.url()).send(enrichCall(""));
    ASSERT_TRUE(server_.waitForAppliedFaults(i, kTestTimeout));
  }
  // Its reply is more than the sockets take: the server waits for this client, who has begun.
  EXPECT_NE(clients.back().receiveSome(), "");
  EXPECT_TRUE(stopsAtOnce());
  for (RawClient& client : clients) {
    client.receiveAll();
    EXPECT_NE(client.ending(), Ending::kTimedOut);
  }
}

TEST_F(FaultTest, aClientThatGivesUpFreesItsPlace) {
  server_.setFaults(R"([{"path": "*", "hang": true}])");
  // More than there are workers, each gone before the next comes.
  for (std::uint64_t i = 1; i <= kWorkers + 1; ++i) {
    RawClient impatient(server_.url());
    impatient.send(enrichCall(""));
    ASSERT_TRUE(server_.waitForAppliedFaults(i, kTestTimeout));
  }
  server_.clearFaults();
  EXPECT_EQ(call().body, kOkBody);
}

TEST_F(FaultTest, isDownUntilItComesUpOnTheSamePort) {
  const std::string url = server_.url();
  server_.setFaults(R"([{"path": "*", "hang": true, "times": 1}])");
  RawClient held(url);
  held.send(enrichCall(""));
  ASSERT_TRUE(server_.waitForAppliedFaults(1, kTestTimeout));
  RawClient kept(url);
  kept.send(enrichCall(""));
  EXPECT_TRUE(kept.receiveUntil(kOkBody).ends_with(kOkBody));
  for (int round = 0; round < 3; ++round) {
    server_.goDown();
    EXPECT_EQ(RawClient(url).ending(), Ending::kRefused);
    EXPECT_FALSE(server_.waitUntilUp(milliseconds(0)));
    server_.comeUp();
    EXPECT_EQ(call().body, kOkBody);
  }
  for (RawClient* const dropped : {&held, &kept}) {
    EXPECT_EQ(dropped->receiveAll(), "");
    EXPECT_EQ(dropped->ending(), Ending::kClosed);
  }
  EXPECT_EQ(server_.url(), url);
}

TEST_F(FaultTest, controlSwitchesFaultsAndRestarts) {
  const auto control = [&](const std::string& method, const std::string& verb,
                           const std::string& body) {
    return callWith(method + " /control/" + verb + " HTTP/1.1\r\nConnection: close\r\n" +
                    sample::hostHeader(server_.url()) +
                    "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body);
  };
  const std::string faults = R"([{"path":"*","status":503,"times":2}])";
  EXPECT_EQ(control("POST", "faults", faults).body, kOkBody);
  EXPECT_EQ(call().status(), "HTTP/1.1 503 Service Unavailable");
  EXPECT_EQ(control("GET", "faults", "").body,
            R"([{"fault":{"path":"*","status":503,"times":2},"calls":1,"struck":1}])");
  EXPECT_EQ(control("POST", "faults", R"([{"path":"*"}])").body,
            R"({"error":"[0]: says nothing that goes wrong"})");
  EXPECT_EQ(server_.faults()[0]["struck"], 1);
  EXPECT_EQ(control("DELETE", "faults", "").body, kOkBody);
  EXPECT_EQ(control("GET", "faults", "").body, "[]");
  EXPECT_EQ(control("POST", "restart", R"({"downMs":60001})").status(), "HTTP/1.1 400 Bad Request");
  EXPECT_EQ(control("POST", "restart", "").body, kOkBody);
  ASSERT_TRUE(server_.waitUntilUp(kTestTimeout));
  EXPECT_EQ(call().body, kOkBody);
}

TEST_F(FaultTest, verdictsAreCountedByCheckpointSinceTheRulesWereSet) {
  const VerdictRules rules = VerdictRules::fromJson(
      sample::parsed(R"([{"nth": 2, "risk": "VERY_HIGH"}, {"risk": "LOW"}])"));
  const auto riskOf = [&](const Json& checkpoint) {
    const std::string body = sample::checkpointBody(checkpoint).dump();
    return post(kVerdictPath, body).json()["risk"].get<int>();
  };
  for (int round = 0; round < 2; ++round) {
    server_.setRules(rules);
    EXPECT_EQ(riskOf(sample::plainCheckpoint("LOGIN")), 0);
    EXPECT_EQ(riskOf(sample::transaction()), 0);
    EXPECT_EQ(riskOf(sample::plainCheckpoint("LOGIN")), 3);
    EXPECT_EQ(riskOf(sample::plainCheckpoint("LOGIN")), 0);
    EXPECT_EQ(riskOf(sample::transaction()), 3);
  }
}

}  // namespace
}  // namespace risk_server
