#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <barrier>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <future>
#include <thread>
#include <vector>

#include "test/crash/crash_kinds.h"

namespace quorvance {
namespace {

constexpr std::size_t kDyingThreads = 8;
constexpr int kHandledByHost = 7;

void install(CrashChildWorld& world) { world.receiveConfiguration(true); }

void dieNow(CrashChildWorld& world, Death die) {
  world.noteFault();
  die();
}

void dieCaptured(CrashChildWorld& world, Death die) {
  install(world);
  dieNow(world, die);
}

void dieOnThread(CrashChildWorld& world, Death die) {
  install(world);
  std::thread([&] { dieNow(world, die); }).join();
}

void dieOnProtectedThread(CrashChildWorld& world, Death die) {
  install(world);
  std::thread([&] {
    ensureAlternateStack();
    dieNow(world, die);
  }).join();
}

// The allocator takes its locks only where there is a second thread.
void dieBesideAThread(CrashChildWorld& world, Death die) {
  std::thread([] { std::promise<void>().get_future().wait(); }).detach();
  dieCaptured(world, die);
}

void dieOnEightThreads(CrashChildWorld& world, Death die) {
  install(world);
  std::barrier start(kDyingThreads);
  std::vector<std::jthread> threads;
  for (std::size_t i = 0; i < kDyingThreads; ++i) {
    threads.emplace_back([&] {
      start.arrive_and_wait();
      dieNow(world, die);
    });
  }
}

void dieInstalledTwice(CrashChildWorld& world, Death die) {
  install(world);
  dieCaptured(world, die);
}

void diePastHostsTerminate(CrashChildWorld& world, Death die) {
  std::set_terminate([] {
    sayLine("host's terminate handler");
    std::abort();
  });
  install(world);
  dieInstalledTwice(world, die);
}

void dieIgnoringBrokenPipes(CrashChildWorld& world, Death die) {
  signal(SIGPIPE, SIG_IGN);
  dieCaptured(world, die);
}

void dieWithoutDelegate(CrashChildWorld& world, Death die) {
  install(world);
  world.dropManager();
  dieNow(world, die);
}

// Its own crash follows, by which it can be seen what the child's has left.
void dieInForkedChild(CrashChildWorld& world, Death die) {
  install(world);
  const pid_t child = fork();
  if (child == 0) die();
  int status = 0;
  waitpid(child, &status, 0);
  sayLine("forked child ended by signal " + std::to_string(WTERMSIG(status)));
  dieNow(world, &writeToNothing);
}

void dieWithHangingDelegate(CrashChildWorld& world, Death die) {
  world.delegateManner = DelegateManner::hangs;
  dieCaptured(world, die);
}

void dieWithCrashingDelegate(CrashChildWorld& world, Death die) {
  world.delegateManner = DelegateManner::crashes;
  dieCaptured(world, die);
}

void dieWithoutFolder(CrashChildWorld& world, Death die) {
  install(world);
  std::filesystem::remove_all(std::filesystem::path(world.folder()).parent_path());
  dieNow(world, die);
}

// The trap cannot know where they are; what the delegate stores is there when the process ends.
void dieWithOwnDocuments(CrashChildWorld& world, Death die) {
  world.replaceDocuments();
  dieCaptured(world, die);
}

// The delegate's report waits for a turn that the dying thread will never end.
void dieWhileStoring(CrashChildWorld& world, Death /*die*/) {
  world.documentsManner = DocumentsManner::faultsFirst;
  world.replaceDocuments();
  install(world);
  world.tellOfCrash({});
}

// It is the host that has caught a crash; what it told of is stored when the call returns.
void exitAfterTelling(CrashChildWorld& world, Death /*die*/) {
  world.tellOfCrash({CrashModelType::signal, "SIGBUS", "Signal SIGBUS(10) was raised.\n", "1.0.0",
                     "12", "x86_64", "crash_child"});
}

void dieOutOfDescriptors(CrashChildWorld& world, Death die) {
  install(world);
  const rlimit few = {64, 64};
  setrlimit(RLIMIT_NOFILE, &few);
  while (dup(STDOUT_FILENO) >= 0) {
  }
  dieNow(world, die);
}

// What a runtime that raises this signal in its normal work would learn too late.
void dieWithHandlerReplaced(CrashChildWorld& world, Death die) {
  signal(SIGSEGV, [](int) { std::_Exit(kHandledByHost); });
  QuorvanceManager::setIsInDebugMode(true);
  install(world);
  std::fflush(stdout);
  QuorvanceManager::setIsInDebugMode(false);
  dieNow(world, die);
}

// The host's own way with this signal, which holds until crash capture is switched on.
void dieWhileSwitchedOff(CrashChildWorld& world, Death die) {
  signal(SIGSEGV, [](int) { std::_Exit(kHandledByHost); });
  world.receiveConfiguration(false);
  dieNow(world, die);
}

}  // namespace

const std::map<std::string, Circumstances>& circumstances() {
  static const std::map<std::string, Circumstances> kCircumstances = {
      {"captured", dieCaptured},
      {"on_thread", dieOnThread},
      {"on_protected_thread", dieOnProtectedThread},
      {"beside_a_thread", dieBesideAThread},
      {"on_eight_threads", dieOnEightThreads},
      {"installed_twice", dieInstalledTwice},
      {"past_hosts_terminate", diePastHostsTerminate},
      {"ignoring_broken_pipes", dieIgnoringBrokenPipes},
      {"no_delegate", dieWithoutDelegate},
      {"in_forked_child", dieInForkedChild},
      {"hanging_delegate", dieWithHangingDelegate},
      {"crashing_delegate", dieWithCrashingDelegate},
      {"removed_folder", dieWithoutFolder},
      {"hosts_own_documents", dieWithOwnDocuments},
      {"while_storing", dieWhileStoring},
      {"told_by_the_host", exitAfterTelling},
      {"out_of_descriptors", dieOutOfDescriptors},
      {"host_handler_replaced", dieWithHandlerReplaced},
      {"switched_off", dieWhileSwitchedOff},
      {"plain_handler", dieWithPlainHandler},
  };
  return kCircumstances;
}

}  // namespace quorvance
