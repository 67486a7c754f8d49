#include "diagnostics/crash_delegates.h"

#include <algorithm>

namespace quorvance {
namespace {

bool isSameDelegate(const WeakCrashEyeDelegate& a, const std::weak_ptr<CrashEyeDelegate>& b) {
  return !a.delegate.owner_before(b) && !b.owner_before(a.delegate);
}

}  // namespace

CrashDelegates::CrashDelegates() : list_(new List()) {}

CrashDelegates::~CrashDelegates() { delete list_.load(); }

void CrashDelegates::add(const std::weak_ptr<CrashEyeDelegate>& delegate) {
  const std::lock_guard lock(replacing_);
  auto next = std::make_unique<List>(*list_.load());
  std::erase_if(*next, [&](const WeakCrashEyeDelegate& present) {
    return present.delegate.expired() || isSameDelegate(present, delegate);
  });
  next->push_back({delegate});
  retired_.reserve(retired_.size() + 1);
  std::unique_ptr<const List> old(list_.exchange(next.release()));
  // Somebody may still be reading it; that is at most once a crash.
  if (isRead_.load()) retired_.push_back(std::move(old));
}

bool CrashDelegates::isAnyoneAlive() noexcept {
  isRead_.store(true);
  const List& list = *list_.load();
  return std::any_of(list.begin(), list.end(), [](const WeakCrashEyeDelegate& present) {
    return !present.delegate.expired();
  });
}

void CrashDelegates::tell(const CrashModel& crash) {
  isRead_.store(true);
  for (const WeakCrashEyeDelegate& present : *list_.load()) {
    if (const auto delegate = present.delegate.lock()) delegate->crashEyeDidCatchCrash(crash);
  }
}

CrashDelegates& CrashDelegates::ofProcess() {
  static auto* const delegates = new CrashDelegates();
  return *delegates;
}

}  // namespace quorvance
