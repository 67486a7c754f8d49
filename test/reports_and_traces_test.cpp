#include <gmock/gmock.h>

#include "platform/testing/manual_executor.h"
#include "test/real_world_test_support.h"

namespace quorvance {
namespace {

using namespace std::chrono_literals;
using testing::Contains;

constexpr const char* kTracingUrlPath = "qrsk-med/3.0/TracingData/";

/// Real HTTP and real files; retries and loops run when the test says so.
struct TracedWorld : RealWorld {
  std::shared_ptr<ManualExecutor> mainQueue = std::make_shared<ManualExecutor>();
  std::unique_ptr<QuorvanceManager> manager =
      std::make_unique<QuorvanceManager>(platform(mainQueue));

  TracedWorld() {
    server.setConfiguration(nlohmann::ordered_json::parse(
        R"({"tracing_manager": {"level_qv_manager": true, "level_sending_data": true}})"));
  }
  // The loops hold the manager, and the manager holds the queue.
  ~TracedWorld() { mainQueue->close(); }

  std::vector<std::string> phasesSent() const {
    std::vector<std::string> phases;
    for (const auto& exchange : server.exchanges()) {
      const bool isUpload = exchange.path == "/" + std::string(kTracingUrlPath);
      if (!isUpload || !exchange.faultInjected.empty()) continue;
      const auto body = nlohmann::json::parse(exchange.request);
      for (const auto& entry : body.at("tracingData")) {
        phases.push_back(entry.value("methodName", "exception") + " " +
                         entry.value("statusLoggingType", ""));
      }
    }
    return phases;
  }
};

TEST(TraceUploadTest, ArrivesWithStartsMiddlesAndEnds) {
  TracedWorld world;
  world.manager->setupWithServerUrl(world.server.url(), "anna");
  // Until the configuration is in force, and the trace loop with it.
  ASSERT_TRUE(world.manager->flush(kTestPatience));
  world.manager->initializeDeviceId();
  ASSERT_TRUE(world.sees("qrsk-med/3.0/SendSessionData/"));
  VerdictInbox inbox;
  world.manager->getRiskForCheckPoint(Launch(), inbox.completion());
  inbox.wait(1);
  world.server.setFaults(R"([{"path": "/)" + std::string(kTracingUrlPath) +
                         R"(", "status": 503, "times": 1}])");
  const std::uint64_t posted = world.mainQueue->delayedPosts();
  world.mainQueue->advance(30s);
  // The completion of the upload, on a thread of the library, arms the loop again. A refused upload
  // keeps its entries; the next one carries them.
  ASSERT_TRUE(world.mainQueue->waitForDelayedPosts(posted + 1, kTestPatience));
  EXPECT_TRUE(world.server.waitForAppliedFaults(1, kTestPatience));
  world.mainQueue->advance(30s);
  // The one that got the fault counts too.
  ASSERT_TRUE(world.sees(kTracingUrlPath, 2));
  const auto phases = world.phasesSent();
  for (const char* phase :
       {"initializeDeviceId Start", "initializeDeviceId End", "initializeDeviceId Middle",
        "getRiskForCheckPoint Start", "getRiskForCheckPoint End", "requestFromServer Start",
        "requestFromServer End"}) {
    EXPECT_THAT(phases, Contains(phase));
  }
}

}  // namespace
}  // namespace quorvance
