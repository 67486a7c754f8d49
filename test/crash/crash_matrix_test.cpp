// What a crash of each kind leaves behind: a child process dies, its folder and its end are looked
// at.

#include <gmock/gmock.h>
#include <signal.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "platform/testing/temporary_folder_test_support.h"
#include "test/child_process.h"
#include "test/child_programs.h"
#include "test/crash/crash_notes.h"

namespace quorvance {
namespace {

using testing::HasSubstr;
using testing::IsSubsetOf;
using testing::Not;
using OrderedJson = nlohmann::ordered_json;

// Two seconds of them are those that a hanging delegate of the host gets.
constexpr std::int64_t kMaxCrashMilliseconds = 3000;
constexpr int kCrashAttempts = 3;
constexpr std::size_t kMaxKept = 50;

/// In which builds a kind means what its name says.
enum class Builds { all, withoutSanitizers };

struct CrashCase {
  std::string death;
  std::string circumstances = "captured";
  /// "error_type" of each report.
  std::vector<std::string> reports = {};
  int endSignal = SIGKILL;
  Builds builds = Builds::all;
  /// Lines of the standard output, besides those of delegates.
  std::string says = "";
  int exitStatus = -1;

  std::string name() const { return death + "_" + circumstances; }
  friend void PrintTo(const CrashCase& one, std::ostream* out) { *out << one.name(); }
};

const std::string kException = "quorvance::(anonymous namespace)::OutOfMoney";

std::vector<CrashCase> allCrashCases() {
  const Builds plain = Builds::withoutSanitizers;
  return {
      {"null_write", "captured", {"SIGSEGV"}},
      {"abort", "captured", {"SIGABRT"}},
      {"division_by_zero", "captured", {"SIGFPE"}},
      {"illegal_instruction", "captured", {"SIGILL"}},
      {"truncated_mapping", "captured", {"SIGBUS"}},
      {"stack_overflow", "captured", {"SIGSEGV"}},
      {"stack_overflow", "on_protected_thread", {"SIGSEGV"}},
      {"stack_overflow", "on_thread", {}, SIGSEGV, plain},
      {"fault_inside_dlopen", "captured", {"SIGSEGV"}},
      {"exception", "captured", {"SIGABRT", kException}},
      {"exception", "on_thread", {"SIGABRT", kException}},
      {"exception_through_noexcept", "captured", {"SIGABRT", kException}},
      {.death = "exception",
       .circumstances = "past_hosts_terminate",
       .reports = {"SIGABRT", kException},
       .says = "host's terminate handler\n"},
      {"null_write", "on_eight_threads", {"SIGSEGV"}},
      {"terminate", "captured", {"SIGABRT"}},
      {"broken_pipe", "captured", {"SIGPIPE"}},
      {"broken_pipe", "ignoring_broken_pipes", {}, 0, Builds::all, "write failed\n", 0},
      {"null_write", "no_delegate"},
      {"exception", "no_delegate"},
      {.death = "null_write",
       .circumstances = "in_forked_child",
       .reports = {"SIGSEGV"},
       .says = "forked child ended by signal 11\n"},
      {.death = "exception",
       .circumstances = "in_forked_child",
       .reports = {"SIGSEGV"},
       .says = "forked child ended by signal 6\n"},
      {"null_write", "hanging_delegate", {"SIGSEGV"}},
      {"exception", "hanging_delegate", {"SIGABRT", kException}},
      {"null_write", "crashing_delegate", {"SIGSEGV"}, SIGSEGV},
      {"null_write", "installed_twice", {"SIGSEGV"}},
      {"null_write", "removed_folder", {"SIGSEGV"}},
      {.death = "null_write",
       .circumstances = "hosts_own_documents",
       .reports = {"SIGSEGV"},
       .says = "told SIGSEGV not stored\n"},
      {"null_write", "while_storing", {"SIGSEGV"}},
      {"null_write", "told_by_the_host", {"SIGBUS"}, 0, Builds::all, "", 0},
      // Sanitizers need descriptors of their own.
      {"null_write", "out_of_descriptors", {"SIGSEGV"}, SIGKILL, plain},
      {"file_size_exceeded", "captured", {"SIGXFSZ"}},
      {.death = "null_write",
       .circumstances = "host_handler_replaced",
       .reports = {"SIGSEGV"},
       .says = "CrashEye: a handler of the host's for SIGSEGV is replaced"},
      {"null_write", "switched_off", {}, 0, Builds::all, "", 7},
      {"abort_inside_malloc", "beside_a_thread", {"SIGABRT"}, SIGKILL, plain},
      {"double_free", "beside_a_thread", {"SIGABRT"}, SIGKILL, plain},
  };
}

bool isSanitized() { return std::strlen(kSanitizers) > 0; }

std::vector<CrashCase> crashCasesOfThisBuild() {
  std::vector<CrashCase> cases = allCrashCases();
  std::erase_if(cases, [](const CrashCase& one) {
    return isSanitized() && one.builds == Builds::withoutSanitizers;
  });
  return cases;
}

// The child's faults are its own business; what a sanitizer finds in its handlers is ours.
std::vector<std::string> sanitizerOptions() {
  const auto with = [](const char* name, const std::string& more) {
    const char* const present = std::getenv(name);
    return std::string(name) + "=" + (present == nullptr ? "" : std::string(present) + ":") + more;
  };
  return {with("ASAN_OPTIONS",
               "handle_segv=1:handle_sigbus=1:handle_sigfpe=1:handle_sigill=1:"
               "handle_abort=0:allow_user_segv_handler=1:detect_leaks=0"),
          with("TSAN_OPTIONS", "halt_on_error=0:handle_segv=1:handle_abort=0")};
}

/// A child's death and what it left.
struct CrashScene {
  explicit CrashScene(const std::string& death, const std::string& circumstances = "captured",
                      std::size_t reportsBefore = 0) {
    std::filesystem::create_directories(data());
    for (std::size_t i = 0; i < reportsBefore; ++i) {
      scratch.put("host/data/crash" + std::to_string(i) + ".json", "{}");
    }
    scratch.put("notes", std::string(sizeof(CrashNotes), '\0'));
    ChildProcess child({kCrashChildProgram, death, circumstances, data(), scratch.at("notes")},
                       scratch.at("complaints"), sanitizerOptions());
    end = child.waitForEnd();
    output = child.said();
    complaints = scratch.get("complaints");
    const std::string noted = scratch.get("notes");
    std::memcpy(&notes, noted.data(), std::min(noted.size(), sizeof(notes)));
    readFolder();
  }

  TemporaryFolder scratch;
  ProcessEnd end;
  std::string output;
  std::string complaints;
  CrashNotes notes;
  /// Of each file whose name begins with "crash".
  std::vector<std::string> reports;
  std::vector<std::string> otherFiles;

 private:
  std::string data() const { return scratch.path() + "/host/data"; }

  void readFolder() {
    if (!std::filesystem::exists(data())) return;
    for (const auto& entry : std::filesystem::directory_iterator(data())) {
      const std::string name = entry.path().filename();
      const bool isReport = name.starts_with("crash") && name.ends_with(".json");
      (isReport ? reports : otherFiles)
          .push_back(isReport ? scratch.get("host/data/" + name) : name);
    }
  }
};

void expectWholeReport(const std::string& text) {
  const OrderedJson report = OrderedJson::parse(text, nullptr, false);
  ASSERT_TRUE(report.is_object()) << text;
  EXPECT_EQ(report.dump(2), text);
  std::vector<std::string> keys;
  for (const auto& member : report.items()) keys.push_back(member.key());
  const std::string name = report.value("error_type", "");
  const bool isSignal = name.starts_with("SIG");
  std::vector<std::string> wanted = {"error_stack", "version", "device_model",
                                     "sdk_version", "cause",   "error_type"};
  if (isSignal) wanted.emplace_back("error_code");
  wanted.emplace_back("error_timestamp");
  ASSERT_EQ(keys, wanted);
  EXPECT_EQ(report["version"], "12");
  EXPECT_EQ(report["device_model"], "x86_64");
  const std::string reason = isSignal ? "Signal " + name + "(" +
                                            std::to_string(report["error_code"].get<int>()) +
                                            ") was raised.\n"
                                      : "no \"money\" left\n";
  EXPECT_EQ(report["cause"], reason);
  EXPECT_GE(report["error_timestamp"], 1'700'000'000'000);
  // The program's own frames are there, not only the addresses.
  EXPECT_THAT(report["error_stack"].get<std::string>(), HasSubstr("crash_child"));
}

void expectReports(const CrashScene& scene, const CrashCase& one) {
  ASSERT_EQ(scene.reports.size(), one.reports.size());
  std::vector<std::string> types;
  for (const std::string& text : scene.reports) {
    expectWholeReport(text);
    types.push_back(OrderedJson::parse(text, nullptr, false).value("error_type", ""));
  }
  std::sort(types.begin(), types.end());
  EXPECT_EQ(types, one.reports);
}

void expectCase(const CrashScene& scene, const CrashCase& one) {
  EXPECT_FALSE(scene.end.wasHanging);
  EXPECT_LT(scene.end.milliseconds, kMaxCrashMilliseconds);
  EXPECT_EQ(scene.end.signal, one.endSignal);
  EXPECT_EQ(scene.end.exitStatus, one.exitStatus);
  expectReports(scene, one);
  EXPECT_THAT(scene.otherFiles, IsSubsetOf({".lock-reports"}));
  EXPECT_THAT(scene.complaints, Not(HasSubstr("signal-unsafe")));
  EXPECT_THAT(scene.output, HasSubstr(one.says));
}

std::string describe(const CrashScene& scene) {
  return "output: " + scene.output + "\ncomplaints: " + scene.complaints.substr(0, 4000);
}

class CrashMatrixTest : public testing::TestWithParam<CrashCase> {};

// By a machine that pauses; or one of several threads died when the signals had been reset already.
bool isSpoilt(const CrashScene& scene, const CrashCase& one) {
  return scene.end.milliseconds >= kMaxCrashMilliseconds ||
         (one.circumstances == "on_eight_threads" && scene.end.signal == SIGSEGV);
}

TEST_P(CrashMatrixTest, LeavesWhatItMustAndEndsInTime) {
  std::optional<CrashScene> scene;
  for (int i = 0; i < kCrashAttempts && (!scene || isSpoilt(*scene, GetParam())); ++i) {
    scene.emplace(GetParam().death, GetParam().circumstances);
  }
  expectCase(*scene, GetParam());
  if (HasFailure()) ADD_FAILURE() << describe(*scene);
}

INSTANTIATE_TEST_SUITE_P(Kinds, CrashMatrixTest, testing::ValuesIn(crashCasesOfThisBuild()),
                         [](const auto& one) { return one.param.name(); });

TEST(CrashTest, FiftiethReportIsKeptAndNoneAfterIt) {
  for (const std::size_t before : {kMaxKept - 1, kMaxKept, kMaxKept + 1}) {
    const CrashScene scene("null_write", "captured", before);
    EXPECT_EQ(scene.reports.size(), std::max(before, kMaxKept));
    EXPECT_EQ(scene.end.signal, SIGKILL);
    EXPECT_THAT(scene.otherFiles, testing::IsEmpty());
    EXPECT_EQ(scene.output, "told SIGSEGV stored\n") << describe(scene);
  }
}

TEST(CrashTest, EveryDelegateIsToldOnceOfEachCrash) {
  EXPECT_EQ(CrashScene("null_write", "installed_twice").output, "told SIGSEGV stored\n");
  EXPECT_EQ(CrashScene("null_write", "on_eight_threads").output, "told SIGSEGV stored\n");
  EXPECT_EQ(CrashScene("exception").output,
            "told " + kException + " stored\ntold SIGABRT stored\n");
  EXPECT_EQ(CrashScene("null_write", "no_delegate").output, "");
}

// Where a sanitizer stands in for the allocator, it looks after this itself ("signal-unsafe").
TEST(CrashTest, DyingThreadNeverCallsTheAllocator) {
  for (const char* death : {"null_write", "abort", "division_by_zero", "illegal_instruction",
                            "truncated_mapping", "stack_overflow", "broken_pipe"}) {
    const CrashScene scene(death);
    EXPECT_GT(scene.notes.faultTime, 0) << death;
    EXPECT_EQ(scene.notes.allocatorCalls, 0U) << death;
  }
  if (isSanitized()) return;
  // One call made the block, and one dies.
  EXPECT_EQ(CrashScene("abort_inside_malloc", "beside_a_thread").notes.allocatorCalls, 2U);
}

}  // namespace
}  // namespace quorvance
