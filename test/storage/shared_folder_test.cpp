// Processes that share one data folder, and that are killed while they write. A kill shows
// wholeness; that a report outlives a loss of power is what the synchronisation before its rename
// is for, and no test here can show it.
//
// QUORVANCE_KILLS=1000 in the environment sets how many processes are killed.

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "test/child_process.h"
#include "test/child_programs.h"
#include "test/real_world_test_support.h"

namespace quorvance {
namespace {

constexpr std::size_t kMaxShared = 50;
constexpr const char* kCrashPath = "qrsk-med/3.0/CrashLogging/";

ChildProcess childOf(const std::string& kind, const std::string& folder,
                     const std::string& argument) {
  return ChildProcess({kStorageChildProgram, kind, folder, argument});
}

nlohmann::json jsonIn(const std::filesystem::path& path) {
  return nlohmann::json::parse(std::ifstream(path), nullptr, false);
}

/// What stands in a folder by name, temporaries apart.
struct FolderContent {
  explicit FolderContent(const std::string& folder) {
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
      const std::string name = entry.path().filename();
      if (name.starts_with("crash")) reports.insert(name);
      if (name.starts_with(".report-")) temporaries.insert(name);
    }
  }
  std::set<std::string> reports;
  std::set<std::string> temporaries;
};

/// Rounds of two processes that are killed in the midst of their work on one folder.
class KillRounds {
 public:
  void run(std::size_t index) {
    ChildProcess left = childOf("store", folder_, "left");
    ChildProcess right = childOf("store", folder_, "right");
    // Every tenth round has both try more reports together than there is room for.
    const bool isFilled = index % 10 == 0;
    if (isFilled) {
      left.waitForLine("done");
      right.waitForLine("done");
    } else {
      (index % 2 == 0 ? left : right).waitForLines(1 + index * 7 % 20);
    }
    left.kill();
    right.kill();
    kills += 2;
    const FolderContent content(folder_);
    check(content, left, "left");
    check(content, right, "right");
    if (!wasLate(left) && !wasLate(right)) {
      if (isFilled) ++filled;
      EXPECT_LE(content.reports.size(), kMaxShared);
      EXPECT_TRUE(!isFilled || content.reports.size() == kMaxShared);
    }
    for (const std::string& name : content.reports) {
      EXPECT_TRUE(jsonIn(folder_ + "/" + name).is_object()) << name;
      std::filesystem::remove(folder_ + "/" + name);
    }
    checkTakenUp(content);
    // Each start tidies up after the processes before it: two of them, one file at a time each.
    EXPECT_LE(content.temporaries.size(), 2U);
  }

  std::size_t kills = 0;
  std::size_t filled = 0;
  std::size_t states = 0;
  std::size_t takenUp = 0;

 private:
  // Who has waited in vain for its turn keeps its report at any rate.
  static bool wasLate(const ChildProcess& process) {
    const std::vector<std::string> lines = process.wholeLines();
    return std::find(lines.begin(), lines.end(), "late") != lines.end();
  }

  // What was left whole, but for its name, is a report once a process has looked for it.
  void checkTakenUp(const FolderContent& content) {
    for (const std::string& name : leftWhole_) {
      if (content.temporaries.contains(name)) continue;
      ++takenUp;
      EXPECT_TRUE(content.reports.contains(name.substr(name.find("crash")))) << name;
    }
    leftWhole_.clear();
    for (const std::string& name : content.temporaries) {
      if (jsonIn(folder_ + "/" + name).is_object()) leftWhole_.insert(name);
    }
  }

  void check(const FolderContent& content, const ChildProcess& process, const std::string& owner) {
    int lastState = -1;
    for (const std::string& line : process.wholeLines()) {
      std::istringstream words(line);
      std::string kind;
      std::string value;
      words >> kind >> value;
      if (kind == "report") {
        EXPECT_TRUE(content.reports.contains(value)) << value << " was accepted and is lost";
      } else if (kind == "state") {
        ++states;
        lastState = std::stoi(value);
      }
    }
    if (lastState < 0) return;
    const nlohmann::json state = jsonIn(folder_ + "/state.json");
    ASSERT_TRUE(state.is_object()) << "torn";
    EXPECT_GE(std::stoi(state.value(owner, "-1")), lastState);
  }

  TemporaryFolder scratch_;
  const std::string folder_ = scratch_.path() + "/data";
  std::set<std::string> leftWhole_;
};

TEST(SharedFolderTest, KilledWritersLoseAndTearNothingAndKeepFifty) {
  const char* const wanted = std::getenv("QUORVANCE_KILLS");
  const std::size_t kills = wanted == nullptr ? 60 : std::stoul(wanted);
  KillRounds rounds;
  for (std::size_t i = 0; rounds.kills < kills && !testing::Test::HasFailure(); ++i) rounds.run(i);
  EXPECT_GT(rounds.filled, 0U) << "the limit was never seen";
  // However many were killed: some had written state, and some left a whole report to take up.
  RecordProperty("states", std::to_string(rounds.states));
  RecordProperty("takenUp", std::to_string(rounds.takenUp));
}

TEST(SharedFolderTest, TwoProcessesThatStartTogetherSendEachReportOnce) {
  constexpr std::size_t kReports = 6;
  RealWorld world;
  world.server.setFaults(R"([{"path": "/)" + std::string(kCrashPath) + R"(", "latency": 100}])");
  const std::string folder = world.folder.path() + "/data";
  std::filesystem::create_directory(folder);
  for (std::size_t i = 0; i < kReports; ++i) {
    std::ofstream(folder + "/crash" + std::to_string(i) + ".json")
        << R"({"error_stack": ")" << i << R"("})";
  }
  ChildProcess left = childOf("upload", folder, world.server.url());
  ChildProcess right = childOf("upload", folder, world.server.url());
  ASSERT_TRUE(world.sees("qrsk-med/3.0/SendSessionData/", 2));
  ASSERT_TRUE(world.sees(kCrashPath, kReports));
  left.kill();
  right.kill();
  std::multiset<std::string> sent;
  for (const auto& exchange : world.server.exchanges()) {
    if (exchange.path != "/" + std::string(kCrashPath)) continue;
    sent.insert(nlohmann::json::parse(exchange.request).at("error_stack").get<std::string>());
  }
  EXPECT_THAT(sent, testing::UnorderedElementsAre("0", "1", "2", "3", "4", "5"));
}

}  // namespace
}  // namespace quorvance
