#include "test/crash/crash_kinds.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <barrier>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <stdexcept>
#include <thread>
#include <vector>

#include "test/child_programs.h"

namespace quorvance {
namespace {

constexpr std::size_t kDyingThreads = 8;
constexpr int kHandledByHost = 7;

// What a compiler sees to be wrong it may leave out: nothing here is known to it.
volatile int zero = 0;
volatile int hundred = 100;
volatile int sink = 0;

void install(CrashChildWorld& world) { world.receiveConfiguration(true); }

void writeToNothingNow(CrashChildWorld& world) {
  world.noteFault();
  writeToNothing();
}

void nullWrite(CrashChildWorld& world) {
  install(world);
  writeToNothingNow(world);
}

template <class Body>
void onAnotherThread(Body body) {
  std::thread(body).join();
}

void nullWriteOnThread(CrashChildWorld& world) {
  install(world);
  onAnotherThread([&] { writeToNothingNow(world); });
}

void callAbort(CrashChildWorld& world) {
  install(world);
  world.noteFault();
  std::abort();
}

void divideByZero(CrashChildWorld& world) {
  install(world);
  world.noteFault();
  sink = hundred / zero;
}

void illegalInstruction(CrashChildWorld& world) {
  install(world);
  world.noteFault();
  __builtin_trap();
}

void busError(CrashChildWorld& world) {
  install(world);
  const int file = memfd_create("truncated", MFD_CLOEXEC);
  constexpr std::size_t kBytes = 4096;
  if (ftruncate(file, kBytes) != 0) return;
  void* const memory = mmap(nullptr, kBytes, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
  if (memory == MAP_FAILED || ftruncate(file, 0) != 0) return;
  world.noteFault();
  sink = *static_cast<volatile int*>(memory);
}

// NOLINTNEXTLINE(misc-no-recursion): its purpose
int recurse(int depth) {
  std::array<char, 1024> frame{};
  volatile char* const bytes = frame.data();
  bytes[static_cast<std::size_t>(depth) % frame.size()] = 1;
  if (depth == zero - 1) return 0;
  return recurse(depth + 1) + bytes[0];
}

void overflowStack(CrashChildWorld& world) {
  install(world);
  world.noteFault();
  sink = recurse(0);
}

void overflowStackOnThread(CrashChildWorld& world) {
  install(world);
  onAnotherThread([&] {
    ensureAlternateStack();
    world.noteFault();
    sink = recurse(0);
  });
}

void overflowUnprotectedStack(CrashChildWorld& world) {
  install(world);
  onAnotherThread([] { sink = recurse(0); });
}

void faultInsideLoader(CrashChildWorld& world) {
  install(world);
  world.noteFault();
  dlopen(kFaultyModule, RTLD_NOW);
}

class OutOfMoney : public std::runtime_error {
 public:
  OutOfMoney() : std::runtime_error("no \"money\" left\n") {}
};

void throwOutOfMoney() { throw OutOfMoney(); }

void throwInMain(CrashChildWorld& world) {
  install(world);
  world.noteFault();
  throwOutOfMoney();
}

void throwOnThread(CrashChildWorld& world) {
  install(world);
  onAnotherThread([&] {
    world.noteFault();
    throwOutOfMoney();
  });
}

void promiseNotToThrow(void (*body)()) noexcept { body(); }

void throwThroughNoexcept(CrashChildWorld& world) {
  install(world);
  world.noteFault();
  try {
    promiseNotToThrow(&throwOutOfMoney);
  } catch (const std::exception&) {
    std::_Exit(EXIT_FAILURE);
  }
}

void throwPastHostsTerminate(CrashChildWorld& world) {
  std::set_terminate([] {
    sayLine("host's terminate handler");
    std::abort();
  });
  install(world);
  install(world);
  throwInMain(world);
}

void crashOnEightThreads(CrashChildWorld& world) {
  install(world);
  std::barrier start(kDyingThreads);
  std::vector<std::thread> threads;
  for (std::size_t i = 0; i < kDyingThreads; ++i) {
    threads.emplace_back([&] {
      start.arrive_and_wait();
      writeToNothingNow(world);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

class HalfMade;
void callOwn(HalfMade& made);
void (*volatile ownCaller)(HalfMade&) = &callOwn;

class HalfMade {
 public:
  HalfMade() { ownCaller(*this); }
  HalfMade(const HalfMade&) = delete;
  HalfMade& operator=(const HalfMade&) = delete;
  virtual ~HalfMade() = default;
  virtual void own() = 0;
};

// Unknown to the compiler too, which knows of one class that has it.
void (HalfMade::*volatile own)() = &HalfMade::own;

void callOwn(HalfMade& made) { (made.*own)(); }

class WholeMade : public HalfMade {
  void own() override { sink = 1; }
};

void callPureVirtual(CrashChildWorld& world) {
  install(world);
  world.noteFault();
  const WholeMade made;
}

void writeToClosedPipe() {
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0) return;
  close(ends[0]);
  if (write(ends[1], "x", 1) < 0) sayLine("write failed");
}

void brokenPipe(CrashChildWorld& world) {
  signal(SIGPIPE, SIG_DFL);
  install(world);
  world.noteFault();
  writeToClosedPipe();
}

void brokenPipeIgnored(CrashChildWorld& world) {
  signal(SIGPIPE, SIG_IGN);
  install(world);
  writeToClosedPipe();
}

void crashWithoutDelegate(CrashChildWorld& world) {
  install(world);
  world.dropManager();
  writeToNothingNow(world);
}

void throwWithoutDelegate(CrashChildWorld& world) {
  install(world);
  world.dropManager();
  throwOutOfMoney();
}

void crashInForkedChild(CrashChildWorld& world) {
  install(world);
  const pid_t child = fork();
  if (child == 0) writeToNothing();
  int status = 0;
  waitpid(child, &status, 0);
  sayLine("forked child ended by signal " + std::to_string(WTERMSIG(status)));
}

void throwInForkedChild(CrashChildWorld& world) {
  install(world);
  const pid_t child = fork();
  if (child == 0) throwOutOfMoney();
  int status = 0;
  waitpid(child, &status, 0);
  sayLine("forked child ended by signal " + std::to_string(WTERMSIG(status)));
  writeToNothingNow(world);
}

void crashWithHangingDelegate(CrashChildWorld& world) {
  world.delegateManner = DelegateManner::hangs;
  nullWrite(world);
}

void throwWithHangingDelegate(CrashChildWorld& world) {
  world.delegateManner = DelegateManner::hangs;
  throwInMain(world);
}

void crashWithCrashingDelegate(CrashChildWorld& world) {
  world.delegateManner = DelegateManner::crashes;
  nullWrite(world);
}

void crashAfterInstallingTwice(CrashChildWorld& world) {
  install(world);
  nullWrite(world);
}

void crashWithoutFolder(CrashChildWorld& world) {
  install(world);
  std::filesystem::remove_all(std::filesystem::path(world.folder()).parent_path());
  writeToNothingNow(world);
}

// The trap cannot know where they are; what the delegate stores is there when the process ends.
void crashWithOwnDocuments(CrashChildWorld& world) {
  world.replaceDocuments();
  nullWrite(world);
}

// The delegate's report waits for a turn that the dying thread will never end.
void crashWhileStoring(CrashChildWorld& world) {
  world.documentsManner = DocumentsManner::faultsFirst;
  world.replaceDocuments();
  install(world);
  world.tellOfCrash({});
}

// It is the host that has caught a crash; what it told of is stored when the call returns.
void exitAfterTelling(CrashChildWorld& world) {
  world.tellOfCrash({CrashModelType::signal, "SIGBUS", "Signal SIGBUS(10) was raised.\n", "1.0.0",
                     "12", "x86_64", "crash_child"});
}

void crashOutOfDescriptors(CrashChildWorld& world) {
  install(world);
  const rlimit few = {64, 64};
  setrlimit(RLIMIT_NOFILE, &few);
  while (dup(STDOUT_FILENO) >= 0) {
  }
  writeToNothingNow(world);
}

// The host writes more than it may; the report must not be cut at the same limit.
void exceedFileSize(CrashChildWorld& world) {
  install(world);
  const rlimit tiny = {16, RLIM_INFINITY};
  setrlimit(RLIMIT_FSIZE, &tiny);
  const int file = open((world.folder() + "/log").c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
  constexpr std::array<char, 64> kBytes{};
  world.noteFault();
  sink = static_cast<int>(write(file, kBytes.data(), kBytes.size()));
  sink = static_cast<int>(write(file, kBytes.data(), kBytes.size()));
}

// What a runtime that raises this signal in its normal work would learn too late.
void crashWithHandlerReplaced(CrashChildWorld& world) {
  signal(SIGSEGV, [](int) { std::_Exit(kHandledByHost); });
  QuorvanceManager::setIsInDebugMode(true);
  install(world);
  std::fflush(stdout);
  QuorvanceManager::setIsInDebugMode(false);
  writeToNothingNow(world);
}

// The host's own way with this signal, which holds until crash capture is switched on.
void crashWhileSwitchedOff(CrashChildWorld& world) {
  signal(SIGSEGV, [](int) { std::_Exit(kHandledByHost); });
  world.receiveConfiguration(false);
  writeToNothingNow(world);
}

}  // namespace

const std::map<std::string, CrashKind>& crashKinds() {
  static const std::map<std::string, CrashKind> kKinds = {
      {"null_write", nullWrite},
      {"null_write_on_thread", nullWriteOnThread},
      {"abort", callAbort},
      {"division_by_zero", divideByZero},
      {"illegal_instruction", illegalInstruction},
      {"truncated_mapping", busError},
      {"stack_overflow", overflowStack},
      {"stack_overflow_on_thread", overflowStackOnThread},
      {"unprotected_stack_overflow", overflowUnprotectedStack},
      {"fault_inside_dlopen", faultInsideLoader},
      {"exception_in_main", throwInMain},
      {"exception_on_thread", throwOnThread},
      {"exception_through_noexcept", throwThroughNoexcept},
      {"exception_past_hosts_terminate", throwPastHostsTerminate},
      {"eight_threads", crashOnEightThreads},
      {"pure_virtual_call", callPureVirtual},
      {"broken_pipe", brokenPipe},
      {"broken_pipe_ignored", brokenPipeIgnored},
      {"no_delegate", crashWithoutDelegate},
      {"exception_without_delegate", throwWithoutDelegate},
      {"full_category", nullWrite},
      {"forked_child", crashInForkedChild},
      {"exception_in_forked_child", throwInForkedChild},
      {"hanging_delegate", crashWithHangingDelegate},
      {"exception_with_hanging_delegate", throwWithHangingDelegate},
      {"crashing_delegate", crashWithCrashingDelegate},
      {"installed_twice", crashAfterInstallingTwice},
      {"removed_folder", crashWithoutFolder},
      {"hosts_own_documents", crashWithOwnDocuments},
      {"fault_while_storing", crashWhileStoring},
      {"told_by_the_host", exitAfterTelling},
      {"out_of_descriptors", crashOutOfDescriptors},
      {"file_size_exceeded", exceedFileSize},
      {"host_handler_replaced", crashWithHandlerReplaced},
      {"switched_off", crashWhileSwitchedOff},
      {"plain_handler", crashWithPlainHandler},
  };
  return kKinds;
}

}  // namespace quorvance
