// What a crash of each kind leaves behind: a child process dies, its folder and its end are looked
// at.

#include <gmock/gmock.h>
#include <signal.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "test/child_programs.h"
#include "test/crash/crash_notes.h"
#include "test/crash/watched_process.h"
#include "test/scratch_folder_test_support.h"

namespace quorvance {
namespace {

using testing::HasSubstr;
using testing::IsSubsetOf;
using testing::Not;
using OrderedJson = nlohmann::ordered_json;

constexpr std::int64_t kMaxMilliseconds = 3000;
constexpr std::size_t kMaxKept = 50;

/// In which builds a kind means what its name says.
enum class Builds { all, withoutSanitizers };

struct CrashCase {
  std::string kind;
  /// "error_type" of each report; an empty one may be any signal.
  std::vector<std::string> reports;
  int endSignal = SIGKILL;
  Builds builds = Builds::all;
  /// Lines of the standard output, besides those of delegates.
  std::string says = "";
  int exitStatus = -1;

  friend void PrintTo(const CrashCase& one, std::ostream* out) { *out << one.kind; }
};

const std::string kException = "quorvance::(anonymous namespace)::OutOfMoney";

std::vector<CrashCase> allCrashCases() {
  const Builds plain = Builds::withoutSanitizers;
  return {
      {"null_write", {"SIGSEGV"}},
      {"null_write_on_thread", {"SIGSEGV"}},
      {"abort", {"SIGABRT"}},
      {"division_by_zero", {"SIGFPE"}},
      {"illegal_instruction", {"SIGILL"}},
      {"truncated_mapping", {"SIGBUS"}},
      {"stack_overflow", {"SIGSEGV"}},
      {"stack_overflow_on_thread", {"SIGSEGV"}},
      {"unprotected_stack_overflow", {}, SIGSEGV, plain},
      {"fault_inside_dlopen", {"SIGSEGV"}},
      {"exception_in_main", {"SIGABRT", kException}},
      {"exception_on_thread", {"SIGABRT", kException}},
      {"exception_through_noexcept", {"SIGABRT", kException}},
      {"exception_past_hosts_terminate",
       {"SIGABRT", kException},
       SIGKILL,
       Builds::all,
       "host's terminate handler\n"},
      {"eight_threads", {"SIGSEGV"}},
      {"pure_virtual_call", {"SIGABRT"}},
      {"broken_pipe", {"SIGPIPE"}},
      {"broken_pipe_ignored", {}, 0, Builds::all, "write failed\n", 0},
      {"no_delegate", {}},
      {"exception_without_delegate", {}},
      {"forked_child", {}, 0, Builds::all, "forked child ended by signal 11\n", 0},
      {"exception_in_forked_child",
       {"SIGSEGV"},
       SIGKILL,
       Builds::all,
       "forked child ended by signal 6\n"},
      {"hanging_delegate", {"SIGSEGV"}},
      {"exception_with_hanging_delegate", {"SIGABRT", kException}},
      {"crashing_delegate", {"SIGSEGV"}, SIGSEGV},
      {"installed_twice", {"SIGSEGV"}},
      {"removed_folder", {"SIGSEGV"}},
      {"hosts_own_documents", {"SIGSEGV"}, SIGKILL, Builds::all, "told SIGSEGV not stored\n"},
      {"fault_while_storing", {"SIGSEGV"}},
      {"told_by_the_host", {"SIGBUS"}, 0, Builds::all, "", 0},
      // Sanitizers need descriptors of their own.
      {"out_of_descriptors", {"SIGSEGV"}, SIGKILL, plain},
      {"file_size_exceeded", {"SIGXFSZ"}},
      {"host_handler_replaced",
       {"SIGSEGV"},
       SIGKILL,
       Builds::all,
       "CrashEye: a handler of the host's for SIGSEGV is replaced"},
      {"switched_off", {}, 0, Builds::all, "", 7},
      {"abort_inside_malloc", {"SIGABRT"}, SIGKILL, plain},
      {"double_free", {"SIGABRT"}, SIGKILL, plain},
      {"corrupted_heap", {""}, SIGKILL, plain},
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
  explicit CrashScene(const std::string& kind, std::size_t reportsBefore = 0) {
    std::filesystem::create_directories(data());
    for (std::size_t i = 0; i < reportsBefore; ++i) {
      std::ofstream(data() + "/crash" + std::to_string(i) + ".json") << "{}";
    }
    const std::string notesFile = scratch.path() + "/notes";
    std::ofstream(notesFile, std::ios::binary) << std::string(sizeof(CrashNotes), '\0');
    const ProcessWords words{scratch.path() + "/output", scratch.path() + "/complaints"};
    end = runToItsEnd({kCrashChildProgram, kind, data(), notesFile}, words, sanitizerOptions());
    output = textOfFile(words.output);
    complaints = textOfFile(words.complaints);
    const std::string noted = textOfFile(notesFile);
    std::memcpy(&notes, noted.data(), std::min(noted.size(), sizeof(notes)));
    readFolder();
  }

  double millisecondsFromFault() const {
    return static_cast<double>(end.endTime - notes.faultTime) / 1e6;
  }

  ScratchFolder scratch;
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
      (isReport ? reports : otherFiles).push_back(isReport ? textOfFile(entry.path()) : name);
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
  const bool mayBeAny = one.reports == std::vector<std::string>{""};
  if (!mayBeAny) {
    EXPECT_EQ(types, one.reports);
  }
}

void expectCase(const CrashScene& scene, const CrashCase& one) {
  EXPECT_FALSE(scene.end.wasHanging);
  EXPECT_LT(scene.end.milliseconds, kMaxMilliseconds);
  EXPECT_EQ(scene.end.signal, one.endSignal);
  EXPECT_EQ(scene.end.exitStatus, one.exitStatus);
  expectReports(scene, one);
  EXPECT_THAT(scene.otherFiles, IsSubsetOf({"log", ".lock-reports"}));
  EXPECT_THAT(scene.complaints, Not(HasSubstr("signal-unsafe")));
  EXPECT_THAT(scene.output, HasSubstr(one.says));
}

std::string describe(const CrashScene& scene) {
  return "output: " + scene.output + "\ncomplaints: " + scene.complaints.substr(0, 4000);
}

class CrashMatrixTest : public testing::TestWithParam<CrashCase> {};

TEST_P(CrashMatrixTest, LeavesWhatItMustAndEndsInTime) {
  const CrashScene scene(GetParam().kind);
  expectCase(scene, GetParam());
  if (scene.notes.faultTime != 0) {
    RecordProperty("millisecondsFromFault", std::to_string(scene.millisecondsFromFault()));
  }
  if (HasFailure()) ADD_FAILURE() << describe(scene);
}

INSTANTIATE_TEST_SUITE_P(Kinds, CrashMatrixTest, testing::ValuesIn(crashCasesOfThisBuild()),
                         [](const auto& kind) { return kind.param.kind; });

TEST(CrashTest, FiftiethReportIsKeptAndNoneAfterIt) {
  for (const std::size_t before : {kMaxKept - 1, kMaxKept, kMaxKept + 1}) {
    const CrashScene scene("full_category", before);
    EXPECT_EQ(scene.reports.size(), std::max(before, kMaxKept));
    EXPECT_EQ(scene.end.signal, SIGKILL);
    EXPECT_THAT(scene.otherFiles, testing::IsEmpty());
    EXPECT_EQ(scene.output, "told SIGSEGV stored\n") << describe(scene);
  }
}

TEST(CrashTest, EveryDelegateIsToldOnceOfEachCrash) {
  EXPECT_EQ(CrashScene("installed_twice").output, "told SIGSEGV stored\n");
  EXPECT_EQ(CrashScene("eight_threads").output, "told SIGSEGV stored\n");
  EXPECT_EQ(CrashScene("exception_in_main").output,
            "told " + kException + " stored\ntold SIGABRT stored\n");
  EXPECT_EQ(CrashScene("no_delegate").output, "");
}

// Where a sanitizer stands in for the allocator, it looks after this itself ("signal-unsafe").
TEST(CrashTest, DyingThreadNeverCallsTheAllocator) {
  for (const char* kind : {"null_write", "abort", "division_by_zero", "illegal_instruction",
                           "truncated_mapping", "stack_overflow", "broken_pipe"}) {
    const CrashScene scene(kind);
    EXPECT_GT(scene.notes.faultTime, 0) << kind;
    EXPECT_EQ(scene.notes.allocatorCalls, 0U) << kind;
  }
  if (isSanitized()) return;
  // The call that dies is itself counted.
  EXPECT_EQ(CrashScene("abort_inside_malloc").notes.allocatorCalls, 1U);
}

}  // namespace
}  // namespace quorvance
