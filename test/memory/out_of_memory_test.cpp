#include <gtest/gtest.h>

#include <csignal>
#include <string>
#include <utility>
#include <vector>

#include "platform/testing/temporary_folder_test_support.h"
#include "test/child_process.h"
#include "test/child_programs.h"
#include "test/real_world_test_support.h"

namespace quorvance {
namespace {

/// Runs hosts whose memory runs out, against a server that goes on.
class OutOfMemoryTest : public testing::Test {
 protected:
  /// Whether the host ended normally, and each of its verdicts had come once. Once it may also die
  /// of a fault of libcurl's (seen in 7.88): without memory for one of a socket's transfers it
  /// destroys the table of them, and divides by its size, 0, when the next one comes.
  testing::AssertionResult endsWell(std::vector<std::string> how,
                                    const char* program = kMemoryChildProgram) {
    const TemporaryFolder folder;
    how.insert(how.begin(), {program, world_.server.url(), folder.path()});
    const ProcessEnd end = ChildProcess(std::move(how)).waitForEnd();
    if (end.exitStatus == 0) return testing::AssertionSuccess();
    if (end.signal == SIGFPE && !std::exchange(hasDivided_, true)) {
      return testing::AssertionSuccess();
    }
    return testing::AssertionFailure() << "signal " << end.signal << ", status " << end.exitStatus
                                       << ", hanging " << end.wasHanging;
  }

  RealWorld world_;
  bool hasDivided_ = false;
};

TEST_F(OutOfMemoryTest, AllocationsThatFailAtRandomCostNoVerdictAndThrowNothing) {
  world_.server.setConfiguration(nlohmann::ordered_json::parse(
      R"({"timeout_connection": 10, "enable_bio_collection": true, "activity_map": true,
          "tracing_manager": {"level_qv_manager": true, "level_sending_data": true}})"));
  for (const char* const oneIn : {"4", "40", "400"}) {
    for (int seed = 0; seed < 20; ++seed) {
      EXPECT_TRUE(endsWell({"random", std::to_string(seed), oneIn})) << seed << " in " << oneIn;
    }
    for (int seed = 0; seed < 5; ++seed) {
      EXPECT_TRUE(endsWell({"random", std::to_string(seed), oneIn}, kOtherMemoryChildProgram))
          << seed << " in " << oneIn << ", other JSON library";
    }
  }
}

TEST_F(OutOfMemoryTest, LargeRepliesInLittleAddressSpaceCostNoVerdict) {
  constexpr std::size_t kReplyBytes = 8'000'000;
  constexpr std::size_t kTexts = 60'000;
  const std::string large = R"({"risk":1,"more":")" + std::string(kReplyBytes, 'x') + "\"}";
  std::string many = R"({"risk":1,"more":[1)";
  for (std::size_t i = 0; i < kTexts; ++i) {
    many += ",\"" + std::string(kReplyBytes / kTexts, 'x') + '"';
  }
  many += "]}";
  for (const std::string& body : {many, large}) {
    world_.server.setFaults(nlohmann::ordered_json::array(
                                {{{"path", "/qrsk-med/3.0/GetCheckpointRisk/"}, {"body", body}}})
                                .dump());
    for (const char* const megabytes : {"20", "70"}) {
      EXPECT_TRUE(endsWell({"limit", megabytes})) << megabytes;
    }
  }
}

}  // namespace
}  // namespace quorvance
