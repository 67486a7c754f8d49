// exit_child SHAPE FOLDER URL CA_FILE NUMBER: a host that uses the library and ends in the way that
// SHAPE names. FOLDER is where the library keeps its state, URL its server, CA_FILE what it trusts;
// NUMBER means what the shape says. Says on the standard output when its end began.

#include <curl/curl.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <openssl/rand.h>
#include <spawn.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <latch>
#include <map>
#include <semaphore>
#include <string>

#include "quorvance/quorvance.h"

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using quorvance::QuorvanceManager;
using Answers = std::counting_semaphore<>;

constexpr int kVerdictsInFlight = 16;
constexpr int kCompletionThreads = 2;
constexpr auto kSlowInitialisation = 100ms;
constexpr auto kTidyingUp = 5ms;
// As many as wait for the console, less those of the library's own.
constexpr int kPrintedLines = 900;
constexpr const char* kRequest = "0B1E70CE-CCCC-4AE5-8D0E-8645616C50FF";

struct Arguments {
  const char* folder = nullptr;
  const char* url = nullptr;
  const char* caFile = nullptr;
  int number = 0;
};

Arguments arguments;
std::atomic<bool> isInitialisationSlow{false};
// The host leaves no time for what goes on beside it.
std::atomic<bool> isHostQuick{false};
std::binary_semaphore threadIsBusy{0};
std::atomic<int> completionsBegun{0};
std::latch bothBusy{kCompletionThreads};
std::latch hostTidiesUp{1};

template <class Work>
void keepBusy(Clock::duration duration, Work work) {
  for (const auto end = Clock::now() + duration; Clock::now() < end;) work();
}

void setUp() { QuorvanceManager::shared()->setupWithServerUrl(arguments.url, "user"); }

void askForVerdict(quorvance::RiskCompletion completion) {
  QuorvanceManager::shared()->getRiskForCheckPoint(quorvance::Launch(), std::move(completion));
}

/// As soon as one is answered the next is asked for.
void keepAsking(Answers& answers) {
  askForVerdict([&answers](quorvance::Risk, const std::string&, const std::string&) {
    answers.release();
    keepAsking(answers);
  });
}

Answers& manyInFlight() {
  static auto* const answers = new Answers(0);
  for (int i = 0; i < kVerdictsInFlight; ++i) keepAsking(*answers);
  return *answers;
}

void sayThatTheEndBegins() {
  timespec now = {};
  clock_gettime(CLOCK_MONOTONIC, &now);
  std::printf("%lld\n", now.tv_sec * 1'000'000'000LL + now.tv_nsec);
  std::fflush(stdout);
}

[[noreturn]] void exitNow() {
  sayThatTheEndBegins();
  std::exit(EXIT_SUCCESS);
}

// --- the shapes --------------------------------------------------------------------------------

void returnFromMain() {
  setUp();
  sayThatTheEndBegins();
}

void logOut() {
  setUp();
  QuorvanceManager::shared()->logout();
  exitNow();
}

/// After NUMBER answers.
void exitInFlight() {
  setUp();
  Answers& answers = manyInFlight();
  for (int i = 0; i < arguments.number; ++i) answers.acquire();
  exitNow();
}

/// NUMBER microseconds after the first call.
void exitDuringInitialisation() {
  setUp();
  keepBusy(std::chrono::microseconds(arguments.number), [] {});
  exitNow();
}

void exitDuringSlowInitialisation() {
  isInitialisationSlow = true;
  setUp();
  threadIsBusy.acquire();
  exitNow();
}

/// While others are in flight.
void exitFromCompletion() {
  setUp();
  manyInFlight();
  askForVerdict([](quorvance::Risk, const std::string&, const std::string&) { exitNow(); });
  for (;;) pause();
}

/// A host's object that uses the library until its very end.
struct LateCaller {
  bool isOn = false;
  ~LateCaller() {
    if (!isOn) return;
    QuorvanceManager::shared()->logout();
    askForVerdict([](quorvance::Risk, const std::string&, const std::string&) { std::abort(); });
  }
};

LateCaller lastCaller;

/// Destructors run between the library's two exit handlers, and one after both.
void destructorsCallOn() {
  QuorvanceManager::shared()->configureWithUserId("user");
  static LateCaller lateCaller{true};
  lastCaller.isOn = true;
  static const auto platform = quorvance::makeLinuxPlatform();  // destroyed there too
  platform.http->dispatch([] { threadIsBusy.release(); });
  threadIsBusy.acquire();
  platform.backgroundQueue->post(quorvance::WorkLane::facts, [] {
    threadIsBusy.release();
    for (;;) pause();
  });
  threadIsBusy.acquire();
  setUp();
  manyInFlight().acquire();
  exitNow();
}

/// Completions keep both of their threads busy until the library's exit handlers have run; no other
/// may begin afterwards.
void exitBeforeCompletions() {
  setUp();
  for (int i = 0; i < kVerdictsInFlight; ++i) {
    askForVerdict([](quorvance::Risk, const std::string&, const std::string&) {
      if (++completionsBegun > kCompletionThreads) std::abort();
      bothBusy.count_down();
      hostTidiesUp.wait();
    });
  }
  bothBusy.wait();
  exitNow();
}

void exitAtOnce() {
  setUp();
  sayThatTheEndBegins();
  _exit(EXIT_SUCCESS);
}

/// After a flush of NUMBER milliseconds at most. A flush that is given no time says so by itself.
void flushAndExitAtOnce() {
  setUp();
  auto manager = QuorvanceManager::shared();
  manager->arriveToCheckPoint(quorvance::Launch());
  manager->updateCheckPointStatus(quorvance::CheckPointType::LOGIN, kRequest,
                                  quorvance::CheckPointStatus::APPROVED, {});
  manager->logout();
  const bool isFlushed = manager->flush(std::chrono::milliseconds(arguments.number));
  _exit(isFlushed || arguments.number == 0 ? EXIT_SUCCESS : EXIT_FAILURE);
}

void printReason() {
  setUp();
  const auto verdict = QuorvanceManager::shared()->riskForCheckPoint(quorvance::Launch()).get();
  std::puts(std::string(toString(verdict.reason)).c_str());
  std::fflush(stdout);
  _exit(EXIT_SUCCESS);
}

void exitQuickly() {
  setUp();
  sayThatTheEndBegins();
  std::quick_exit(EXIT_SUCCESS);
}

/// Only a fork of this process takes the normal way out.
void exitForkedChild() {
  setUp();
  sayThatTheEndBegins();
  const pid_t child = fork();
  if (child == 0) std::exit(EXIT_SUCCESS);
  int status = EXIT_FAILURE;
  waitpid(child, &status, 0);
  _exit(status == 0 ? EXIT_SUCCESS : EXIT_FAILURE);
}

/// Another program tells which descriptors it was given.
void startProgram() {
  setUp();
  manyInFlight().acquire();
  sayThatTheEndBegins();
  char program[] = "/bin/ls";
  char option[] = "-l";
  char folder[] = "/proc/self/fd";
  char* const command[] = {program, option, folder, nullptr};
  pid_t child = -1;
  posix_spawn(&child, program, nullptr, nullptr, command, environ);
  waitpid(child, nullptr, 0);
  _exit(EXIT_SUCCESS);
}

/// What was printed last needs the end's care.
void printAndReturn() {
  QuorvanceManager::setIsInDebugMode(true);
  isHostQuick = true;
  QuorvanceManager::shared();
  sayThatTheEndBegins();
  for (int i = 0; i < kPrintedLines; ++i) QuorvanceManager::log("line");
  QuorvanceManager::log("the last line");
}

const std::map<std::string, void (*)()> kShapes = {
    {"return_from_main", returnFromMain},
    {"log_out", logOut},
    {"exit_in_flight", exitInFlight},
    {"exit_during_initialisation", exitDuringInitialisation},
    {"exit_during_slow_initialisation", exitDuringSlowInitialisation},
    {"exit_from_completion", exitFromCompletion},
    {"destructors_call_on", destructorsCallOn},
    {"exit_before_completions", exitBeforeCompletions},
    {"exit_at_once", exitAtOnce},
    {"flush_and_exit_at_once", flushAndExitAtOnce},
    {"print_reason", printReason},
    {"exit_quickly", exitQuickly},
    {"exit_forked_child", exitForkedChild},
    {"start_program", startProgram},
    {"print_and_return", printAndReturn},
};

}  // namespace

// In front of the HTTP library's own: the initialisation goes on in the TLS library for a while,
// and the server's certificate is trusted.

extern "C" CURLcode curl_global_init(long flags) {
  const auto real = reinterpret_cast<CURLcode (*)(long)>(dlsym(RTLD_NEXT, "curl_global_init"));
  const CURLcode code = real(flags);
  if (!isInitialisationSlow) return code;
  threadIsBusy.release();
  std::array<unsigned char, 64> bytes{};
  keepBusy(kSlowInitialisation, [&] { RAND_bytes(bytes.data(), static_cast<int>(bytes.size())); });
  return code;
}

extern "C" CURL* curl_easy_init() {
  const auto real = reinterpret_cast<CURL* (*)()>(dlsym(RTLD_NEXT, "curl_easy_init"));
  CURL* const handle = real();
  curl_easy_setopt(handle, CURLOPT_CAINFO, arguments.caFile);
  return handle;
}

// NOLINTBEGIN(bugprone-reserved-identifier): the names are the sanitizers'.
// Read by the leak sanitizer: a host that ends in the middle of its work leaves that behind.
extern "C" int __lsan_is_turned_off() { return 1; }
// Read by the thread sanitizer, which otherwise holds up every end by a second.
extern "C" const char* __tsan_default_options() { return "atexit_sleep_ms=0"; }
// NOLINTEND(bugprone-reserved-identifier)

int main(int argc, char** argv) {
  const auto shape = argc == 6 ? kShapes.find(argv[1]) : kShapes.end();
  if (shape == kShapes.end()) {
    std::fputs("usage: exit_child SHAPE FOLDER URL CA_FILE NUMBER\n", stderr);
    return EXIT_FAILURE;
  }
  close_range(STDERR_FILENO + 1, ~0U, 0);  // whoever started this has sockets of its own
  // A host with an end of its own: what goes on beside it has the time to go wrong.
  std::atexit([] {
    hostTidiesUp.count_down();
    if (isHostQuick) _exit(EXIT_SUCCESS);
    keepBusy(kTidyingUp, [] {});
  });
  arguments = {argv[2], argv[3], argv[4], std::atoi(argv[5])};
  quorvance::LinuxPlatformOptions options;
  options.hostApplication = {"com.bank.app", "4.2"};
  options.dataFolder = arguments.folder;
  QuorvanceManager::usePlatform(quorvance::makeLinuxPlatform(std::move(options)));
  shape->second();
  return EXIT_SUCCESS;
}
