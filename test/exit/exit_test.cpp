// What the end of a host's process leaves behind, and that it comes in time: child processes end
// while the library is at work. With QUORVANCE_EXIT_REPEATS=200 in the environment the ends under
// TLS come so often.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "platform/testing/temporary_folder_test_support.h"
#include "test/child_process.h"
#include "test/child_programs.h"
#include "test/https_server_test_support.h"

namespace quorvance {
namespace {

using testing::HasSubstr;
using testing::Not;

/// How long the library may hold up the end, and how long a busy machine may.
constexpr std::int64_t kMaxDelayMilliseconds = 500;
constexpr std::int64_t kMaxExitMilliseconds = 5000;
constexpr int kAttempts = 5;  // of which a busy machine may spoil some

/// Hosts that end, each over a folder of its own.
class ExitTest : public testing::Test {
 protected:
  struct Ending {
    ProcessEnd process;
    /// From where the host began its end.
    std::int64_t milliseconds = 0;
    std::string output;
  };

  void serve(std::size_t callsOfAConnection) {
    const std::string stem = scratch_.at("certificate");
    makeCertificate(stem, "-x509 -addext subjectAltName=IP:127.0.0.1");
    server_ = std::make_unique<HttpsServer>(stem, callsOfAConnection);
  }

  /// Its folder is new.
  Ending run(const std::string& shape, int number = 0) {
    std::filesystem::remove_all(folder_);
    std::filesystem::create_directory(folder_);
    return runOverFolder(shape, number);
  }

  Ending runOverFolder(const std::string& shape, int number = 0) {
    const std::string url = server_ ? server_->url() : "http://127.0.0.1:1/";
    Ending ending;
    ChildProcess child({kExitChildProgram, shape, folder_, url, scratch_.at("certificate.pem"),
                        std::to_string(number)},
                       scratch_.at("complaints"));
    ending.process = child.waitForEnd();
    ending.output = child.said();
    ending.milliseconds =
        (ending.process.endTime - std::strtol(ending.output.c_str(), nullptr, 10)) / 1'000'000;
    EXPECT_EQ(ending.process.signal, 0) << shape << ' ' << number;
    EXPECT_EQ(ending.process.exitStatus, EXIT_SUCCESS) << scratch_.get("complaints");
    EXPECT_LT(ending.milliseconds, kMaxExitMilliseconds) << shape << ' ' << number;
    return ending;
  }

  /// Runs it again where it does not hold after an end that was held up for as long as the library
  /// may: by its contract it then waits no longer for the disk.
  template <class Condition>
  void expectAfter(const std::string& shape, int number, const Condition& holds) {
    Ending ending = run(shape, number);
    for (int i = 0; i < kAttempts && !holds(ending) && isHeldUp(ending); ++i) {
      ending = run(shape, number);
    }
    EXPECT_TRUE(holds(ending)) << shape << ' ' << number << ", " << ending.milliseconds << " ms";
    longest_ = std::max(longest_, ending.milliseconds);
  }

  static bool isHeldUp(const Ending& ending) {
    return ending.milliseconds >= kMaxDelayMilliseconds;
  }

  /// As the state file tells it; empty when there is none.
  std::string storedUser() const {
    const auto state = nlohmann::json::parse(scratch_.get("data/state.json"), nullptr, false);
    return state.is_object() ? state.value("user_id", "") : "";
  }

  const TemporaryFolder scratch_;
  const std::string folder_ = scratch_.path() + "/data";
  std::unique_ptr<HttpsServer> server_;
  std::int64_t longest_ = 0;
};

TEST_F(ExitTest, TheLastWriteIsOnTheDisk) {
  expectAfter("return_from_main", 0, [&](const Ending&) { return storedUser() == "user"; });
  runOverFolder("log_out");
  EXPECT_EQ(storedUser(), "UNKNOWN");
}

TEST_F(ExitTest, TheLastLineIsPrinted) {
  expectAfter("print_and_return", 0,
              [](const Ending& ending) { return ending.output.ends_with("the last line\n"); });
}

TEST_F(ExitTest, ADiskThatDoesNotAnswerIsWaitedForUpToABoundAtANormalEndAlone) {
  std::filesystem::create_directory(folder_);
  const int lock = open((folder_ + "/state.lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  ASSERT_EQ(flock(lock, LOCK_EX), 0);
  EXPECT_GE(runOverFolder("return_from_main").milliseconds, kMaxDelayMilliseconds);
  for (const std::string shape : {"exit_at_once", "exit_quickly", "exit_forked_child"}) {
    Ending ending = runOverFolder(shape);
    for (int i = 0; i < kAttempts && isHeldUp(ending); ++i) ending = runOverFolder(shape);
    EXPECT_FALSE(isHeldUp(ending)) << shape;
  }
  EXPECT_EQ(storedUser(), "");
  close(lock);
}

TEST_F(ExitTest, NothingRunsInTheTlsLibraryWhileItCleansUp) {
  serve(1);  // every call is a handshake
  const char* const wanted = std::getenv("QUORVANCE_EXIT_REPEATS");
  const int usual = std::string_view(kSanitizers).empty() ? 12 : 3;
  const int times = wanted == nullptr ? usual : std::atoi(wanted);
  for (const std::string shape : {"exit_in_flight", "exit_during_initialisation",
                                  "exit_during_slow_initialisation", "exit_from_completion"}) {
    longest_ = 0;
    for (int i = 0; i < times; ++i) {
      const int number = shape == "exit_in_flight" ? 1 + i % 40 : i * 50 % 4000;
      expectAfter(shape, number, [&](const Ending&) { return storedUser() == "user"; });
    }
    RecordProperty(shape + "_longest_milliseconds", static_cast<int>(longest_));
  }
}

TEST_F(ExitTest, DestructorsOfTheHostMayCallOn) {
  serve(1);
  expectAfter("destructors_call_on", 0, [&](const Ending&) { return storedUser() == "UNKNOWN"; });
}

TEST_F(ExitTest, NoCompletionOfTheHostBeginsAnyMore) {
  serve(1);
  run("exit_before_completions");
}

TEST_F(ExitTest, StartedProgramsInheritNoDescriptor) {
  serve(100);
  const std::string listing = run("start_program").output;
  EXPECT_THAT(listing, HasSubstr("/proc/"));
  EXPECT_THAT(listing, Not(HasSubstr("socket:")));
  EXPECT_THAT(listing, Not(HasSubstr("anon_inode:")));
}

}  // namespace
}  // namespace quorvance
