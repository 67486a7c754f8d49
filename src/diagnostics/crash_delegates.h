#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

#include "diagnostics/crash_eye_delegate.h"

namespace quorvance {

struct WeakCrashEyeDelegate {
  std::weak_ptr<CrashEyeDelegate> delegate;
};

/// Those who are told of a crash. A dying thread can neither wait for a lock nor for memory, so the
/// list is never changed but replaced. Whoever is about to read it says so first; whoever replaces
/// it looks afterwards, and then leaves the old one be.
class CrashDelegates {
 public:
  CrashDelegates();
  ~CrashDelegates();
  CrashDelegates(const CrashDelegates&) = delete;
  CrashDelegates& operator=(const CrashDelegates&) = delete;

  /// Once each; those that are gone are dropped. Any thread.
  void add(const std::weak_ptr<CrashEyeDelegate>& delegate);
  /// Async-signal-safe.
  bool isAnyoneAlive() noexcept;
  /// In the order in which they came.
  void tell(const CrashModel& crash);

  /// Of this process; never destroyed.
  static CrashDelegates& ofProcess();

 private:
  using List = std::vector<WeakCrashEyeDelegate>;

  std::mutex replacing_;
  std::vector<std::unique_ptr<const List>> retired_;  // guarded by replacing_
  std::atomic<bool> isRead_{false};
  std::atomic<const List*> list_;
};

}  // namespace quorvance
