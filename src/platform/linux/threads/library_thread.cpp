#include "platform/linux/threads/library_thread.h"

#include <pthread.h>
#include <signal.h>

#include <atomic>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <thread>
#include <utility>

#include "base/forked_child.h"
#include "base/library_code.h"
#include "platform/linux/threads/process_exit.h"
#include "platform/linux/threads/signal_stack.h"

namespace quorvance {
namespace {

// What a fault of the thread itself raises; a blocked one would kill without any handler.
constexpr int kFaultSignals[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGSYS, SIGTRAP};

sigset_t asynchronousSignals() {
  sigset_t signals;
  sigfillset(&signals);
  for (const int fault : kFaultSignals) sigdelset(&signals, fault);
  return signals;
}

/// The calling thread's signal mask, replaced while the object lives: a new thread inherits it.
class SignalMask {
 public:
  explicit SignalMask(const sigset_t& mask) { pthread_sigmask(SIG_SETMASK, &mask, &previous_); }
  ~SignalMask() { pthread_sigmask(SIG_SETMASK, &previous_, nullptr); }
  SignalMask(const SignalMask&) = delete;
  SignalMask& operator=(const SignalMask&) = delete;

 private:
  sigset_t previous_;
};

}  // namespace

/// What the thread and its owner share.
struct LibraryThread::Run {
  std::function<void()> body;
  SignalStack::Owner signalStack = SignalStack::make();
  std::atomic<std::thread::id> id{};
  std::mutex mutex;
  std::condition_variable ended;
  bool isOver = false;

  void execute(const char* name) {
    const LibraryCode mark;
    pthread_setname_np(pthread_self(), name);
    id = std::this_thread::get_id();
    SignalStack::install(std::move(signalStack));
    body();
    body = nullptr;
    const std::lock_guard lock(mutex);
    isOver = true;
    ended.notify_all();
  }

  void wait() {
    std::unique_lock lock(mutex);
    ended.wait(lock, [&] { return isOver; });
  }
};

bool LibraryThread::start(const char* name, std::function<void()> body) noexcept {
  watchForForks();
  try {
    auto run = std::make_shared<Run>();
    if (!run->signalStack) return false;
    run->body = std::move(body);
    const SignalMask mask(asynchronousSignals());
    std::thread([run, name] { run->execute(name); }).detach();
    run_ = std::move(run);
  } catch (const std::exception&) {
    return false;
  }
  return true;
}

bool LibraryThread::isCurrent() const {
  return run_ && run_->id.load() == std::this_thread::get_id();
}

void LibraryThread::finish() {
  if (run_ && !isForkedChild() && !hasProcessExitBegun() && !isCurrent()) run_->wait();
  detach();
}

}  // namespace quorvance
