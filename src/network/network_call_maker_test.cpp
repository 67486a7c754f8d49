#include "network/network_call_maker.h"

#include <gmock/gmock.h>

#include <cmath>
#include <map>
#include <set>

#include "base/debug.h"
#include "network/quorvance_network_manager.h"
#include "platform/testing/test_world.h"

namespace quorvance {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

/// Tells in a debug line that a report is handed to the file lane.
class TellingQueue : public BackgroundQueue {
 public:
  explicit TellingQueue(std::shared_ptr<BackgroundQueue> used) : queue_(std::move(used)) {}
  void post(WorkLane lane, Task task) override {
    EXPECT_EQ(lane, WorkLane::files);
    debugPrint("report");
    queue_->post(lane, std::move(task));
  }

 private:
  const std::shared_ptr<BackgroundQueue> queue_;
};

struct CallWorld : TestWorld {
  std::shared_ptr<InnerQuorvanceData> state =
      std::make_shared<InnerQuorvanceData>(time, store, identity);
  std::shared_ptr<SystemTexts> texts = std::make_shared<SystemTexts>(environment);
  std::shared_ptr<TracingManager> tracing = std::make_shared<TracingManager>(state, texts);
  std::shared_ptr<ExceptionLogger> exceptions = std::make_shared<ExceptionLogger>(tracing);
  std::shared_ptr<DeliveryLedger> ledger = std::make_shared<DeliveryLedger>();
  std::shared_ptr<NetworkCallMaker> maker = std::make_shared<NetworkCallMaker>(CallServices{
      http, time, state, texts, tracing, exceptions,
      std::make_shared<ReportKeeper>(std::make_shared<ReportStore>(documents, exceptions, ledger),
                                     std::make_shared<TellingQueue>(time), texts, ledger),
      ledger});
  std::vector<ResponceObject> responses;
  int dropped = 0;

  void call(const std::string& url, Json params, std::optional<bool> reportErrors = std::nullopt) {
    maker->requestFromServer(
        url, std::move(params), "mine", reportErrors,
        {[this](ResponceObject response) { responses.push_back(std::move(response)); },
         [this] { ++dropped; }});
  }

  std::map<std::int64_t, Json> reportsByCode() const {
    std::map<std::int64_t, Json> reports;
    for (const auto& [name, bytes] : documents->files) {
      EXPECT_TRUE(name.starts_with("communicationError")) << name;
      const Json report = *parseJson(bytes);
      reports.emplace(findInteger(report, "error_code").value_or(-1), report);
    }
    return reports;
  }

  std::vector<std::string> phases() const {
    std::vector<std::string> texts_;
    for (const Json& entry : tracing->entries()) {
      const std::string* phase = findText(entry, "statusLoggingType");
      texts_.push_back(phase == nullptr ? "exception" : *phase);
    }
    return texts_;
  }
};

Json objectWith(std::string_view key, Json value) {
  Json object = Json::object();
  object[std::string(key)] = std::move(value);
  return object;
}

TEST(CallMakerTest, SendsTheBodyWithTheLibrarysVersion) {
  CallWorld world;
  world.call("http://risk.test/p", objectWith("version", "theirs"));
  EXPECT_THAT(world.http->sent(), IsEmpty());
  world.time->run();
  const auto sent = world.http->sent();
  ASSERT_EQ(sent.size(), 1U);
  EXPECT_EQ(sent[0].request.body, R"({"version":"1.0.0"})");
  EXPECT_EQ(sent[0].request.contentType, "application/json; charset=utf-8");
  ASSERT_EQ(world.responses.size(), 1U);
  EXPECT_TRUE(world.responses[0].succeeded());
  EXPECT_EQ(world.dropped, 0);
}

TEST(CallMakerTest, EarlyFaultsEndInSilenceAndTellTheOwner) {
  for (const char* url : {"", "http://risk.test/a b", "http://risk.test/%4", "http://r\xC3\xA9/",
                          "http://risk.test/\n"}) {
    CallWorld world;
    world.state->replaceSdkConfig(
        SdkConfig::fromJson(*parseJson(R"({"tracing_manager":{"level_sending_data":true}})")));
    world.call(url, Json::object());
    world.time->run();
    EXPECT_THAT(world.http->sent(), IsEmpty()) << url;
    EXPECT_THAT(world.responses, IsEmpty()) << url;
    EXPECT_THAT(world.phases(), IsEmpty()) << url;
    EXPECT_EQ(world.dropped, 1) << url;
  }
  CallWorld world;
  world.state->replaceSdkConfig(
      SdkConfig::fromJson(*parseJson(R"({"tracing_manager":{"level_sending_data":true}})")));
  world.call("http://risk.test/p", objectWith("amount", std::nan("")));
  world.time->run();
  EXPECT_THAT(world.http->sent(), IsEmpty());
  EXPECT_THAT(world.phases(), ElementsAre("Start", "exception"));
  EXPECT_THAT(world.documents->files, IsEmpty());
  EXPECT_EQ(world.dropped, 1);
}

TEST(CallMakerTest, FailuresAreReportedUnlessTheCallSaysNo) {
  CallWorld world;
  world.texts->setSystemVersion("12");
  world.environment->variables["SIMULATOR_MODEL_IDENTIFIER"] = "Simulated";
  world.http->answerOnce("p", refusedReply());
  world.http->answerOnce("p", statusReply(503));
  world.http->answerOnce("p", okReply("no JSON"));
  world.http->answerOnce("p", statusReply(503));
  for (int i = 0; i < 3; ++i) world.call("http://risk.test/p", Json::object());
  world.call("http://risk.test/p", Json::object(), false);
  world.time->run();
  auto reports = world.reportsByCode();
  ASSERT_EQ(reports.size(), 2U);
  EXPECT_EQ(textOf(reports[0]),
            R"({"error_stack":"http://risk.test/p","version":"12","device_model":"Simulated",)"
            R"("sdk_version":"1.0.0","cause":"test 111: connection refused",)"
            R"("error_type":"test 111: connection refused","error_code":0,)"
            R"("error_timestamp":1700000000000})");
  EXPECT_EQ(*findText(reports[503], "error_type"), "Connection");
  EXPECT_EQ(world.responses[3].error, 503);
}

TEST(CallMakerTest, EndIsTracedUnderTheSwitchOfTheStart) {
  CallWorld world;
  world.state->replaceSdkConfig(
      SdkConfig::fromJson(*parseJson(R"({"tracing_manager":{"level_sending_data":true}})")));
  world.http->answer("p", [&](const SentRequest&) {
    world.state->replaceSdkConfig({});
    return okReply("{}");
  });
  world.call("http://risk.test/p", Json::object());
  world.time->run();
  EXPECT_THAT(world.phases(), ElementsAre("Start", "End"));
  EXPECT_EQ(textOf(world.tracing->entries()[0]["paramList"]), R"(["http://risk.test/p"])");
  EXPECT_EQ(textOf(world.tracing->entries()[0]["methodName"]), R"("requestFromServer")");
}

TEST(CallMakerTest, CallOutlivesItsMakerWithoutVersionAndReport) {
  CallWorld world;
  world.http->answer("p", statusReply(500));
  world.call("http://risk.test/p", Json::object());
  world.maker.reset();
  world.time->run();
  EXPECT_EQ(world.http->sent()[0].request.body, "{}");
  EXPECT_THAT(world.documents->files, IsEmpty());
  ASSERT_EQ(world.responses.size(), 1U);
  EXPECT_EQ(world.responses[0].error, 500);
}

TEST(CallMakerTest, DroppedWorkTellsItsOwnerOnce) {
  CallWorld world;
  world.http->neverAnswer();
  world.call("http://risk.test/p", Json::object());
  world.time->run();
  EXPECT_EQ(world.dropped, 0);
  world.http->dropAll();
  EXPECT_EQ(world.dropped, 1);
  EXPECT_THAT(world.responses, IsEmpty());
}

// A face image has megabytes.
TEST(CallMakerTest, DebugLineCutsLongTextsAndTheBodyDoesNot) {
  CallWorld world;
  const DebugLines debug;
  const std::string image(100'000, 'A');
  Json body = objectWith("face", objectWith("image", image));
  body["kept"] = std::string(4096, 'B');
  world.call("http://risk.test/p", std::move(body));
  world.time->run();
  EXPECT_TRUE(debug.contain(R"("kept":")" + std::string(4096, 'B') + '"'));
  EXPECT_TRUE(debug.contain(std::string(4096, 'A') + "... (100000 bytes)"));
  EXPECT_FALSE(debug.contain(std::string(4097, 'A')));
  EXPECT_NE(world.http->sent().at(0).request.body.find(image), std::string::npos);
}

/// What a call does where a host or a server can see it, in order.
std::vector<std::string> effectsOfCallAnswered(const HttpReply& reply) {
  CallWorld world;
  world.state->replaceSdkConfig(
      SdkConfig::fromJson(*parseJson(R"({"tracing_manager":{"level_sending_data":true}})")));
  world.http->answer("p", [&](const SentRequest&) {
    debugPrint("request");
    return reply;
  });
  const DebugLines debug;
  world.maker->requestFromServer("http://risk.test/p", Json::object(), "mine", std::nullopt,
                                 [](const ResponceObject&) { debugPrint("completion"); });
  world.time->run();
  std::vector<std::string> effects = debug.lines();
  for (std::string& line : effects) {
    if (line.starts_with("length dataLogging: ")) line = "trace";
  }
  return effects;
}

TEST(CallMakerTest, EffectsOfACallComeInTheirOrder) {
  const std::string body = R"(jsonObj {"version":"1.0.0"})";
  const std::string response = "Network Responce: reqID: mine url: Optional(http://risk.test/p) ";
  const std::string accepted = "statusCode: Optional(200) error: nil error: nil output: ";
  EXPECT_THAT(effectsOfCallAnswered(okReply("{}")),
              ElementsAre(body, "trace", "request", response + accepted + "Optional({})", "trace",
                          "completion"));
  EXPECT_THAT(effectsOfCallAnswered(refusedReply()),
              ElementsAre(body, "trace", "request", "report", "trace", "completion"));
  EXPECT_THAT(
      effectsOfCallAnswered(statusReply(503)),
      ElementsAre(body, "trace", "request", "report", StartsWith(response), "trace", "completion"));
  EXPECT_THAT(effectsOfCallAnswered(okReply("no JSON")),
              ElementsAre(body, "trace", "request", "trace", HasSubstr("The reply is no JSON"),
                          StartsWith(response), "trace", "completion"));
}

TEST(ClientTest, AddsTheCommonBlocksAndGluesUrlAndPath) {
  CallWorld world;
  QuorvanceNetworkManager client(world.state, world.maker);
  Json body = objectWith("keys", 1);
  body["session"] = 2;
  client.identity().setServerUrl("http://risk.test");
  client.identity().setUserId("a b&c%");
  client.identity().configureDeviceId("d");
  const PreparedCall call = client.prepare(Service::getCheckpointRisk, CheckPointType::LOGIN);
  client.send(call, body, {});
  const PreparedCall next = client.prepare(Service::getDeviceId);
  client.send(next, Json::object(), {});
  world.time->run();
  const auto sent = world.http->sent();
  ASSERT_EQ(sent.size(), 2U);
  EXPECT_EQ(sent[0].request.url, "http://risk.testqrsk-med/3.0/GetCheckpointRisk/");
  EXPECT_EQ(sent[1].request.url, "http://risk.testqrsk-med/3.0//GetDeviceID/");
  EXPECT_EQ(sent[0].request.body,
            R"({"keys":{"user_id":"a%20b&c%25","device_id":"d","requestID":")" + call.requestId +
                R"(","app_uuid":"0F1E2D3C-4B5A-4978-8796-A5B4C3D2E1F0","checkpoint":"LOGIN",)" +
                R"("version":"1.0.0"},"session":)" +
                textOf(world.state->currentSession().getJson()) + R"(,"version":"1.0.0"})");
  EXPECT_NE(call.requestId, next.requestId);
}

TEST(ClientTest, FaceImageGoesAsItStands) {
  CallWorld world;
  QuorvanceNetworkManager client(world.state, world.maker);
  client.identity().setServerUrl("http://risk.test/");
  client.sendImage(objectWith("image", "x"), {});
  world.http->answer("SendBiometricImage/", statusReply(500));
  world.time->run();
  EXPECT_EQ(world.http->sent()[0].request.body, R"({"image":"x","version":"1.0.0"})");
  EXPECT_THAT(world.documents->files, IsEmpty());
}

TEST(ClientTest, FailuresOfFiveOfAllServicesAreReported) {
  CallWorld world;
  QuorvanceNetworkManager client(world.state, world.maker);
  client.identity().setServerUrl("http://risk.test/");
  world.http->answer("/", statusReply(503));
  std::set<std::string> reported;
  for (std::size_t i = 0; i < kServiceRows.size(); ++i) {
    const auto service = static_cast<Service>(i);
    if (service == Service::sendBiometricImage) {
      client.sendImage(Json::object(), {});
    } else {
      client.send(client.prepare(service), Json::object(), {});
    }
  }
  world.time->run();
  EXPECT_EQ(world.http->sent().size(), 14U);
  for (const auto& [name, bytes] : world.documents->files) {
    reported.insert(*findText(*parseJson(bytes), "error_stack"));
  }
  EXPECT_THAT(reported, ElementsAre("http://risk.test/qrsk-med/3.0//UpdateTransactionResult/",
                                    "http://risk.test/qrsk-med/3.0/BiometricData/",
                                    "http://risk.test/qrsk-med/3.0/CrashLogging/",
                                    "http://risk.test/qrsk-med/3.0/GetCheckpointRisk/",
                                    "http://risk.test/qrsk-med/3.0/SendCheckpointEvent/"));
}

}  // namespace
}  // namespace quorvance
