#pragma once

#include <cstddef>
#include <memory>
#include <new>

namespace quorvance {

// The first two are defined by the platform that is linked; one without forks answers false.

/// Begins to watch for forks of this process; once is enough, more does nothing. Any thread.
void watchForForks() noexcept;

/// Whether this process is a fork of one that had the library in use: its threads are gone and its
/// locks may be held by nobody, so the library does nothing there. Any thread.
bool isForkedChild() noexcept;

/// First in the destructor of whatever a host may destroy: true in a forked child, where `owned` is
/// then leaked with all that it holds, and nothing is left to do.
template <class Owned>
bool leakInForkedChild(const std::shared_ptr<Owned>& owned) noexcept {
  if (!isForkedChild()) return false;
  alignas(std::shared_ptr<Owned>) std::byte oneMoreOwner[sizeof(owned)];
  new (oneMoreOwner) std::shared_ptr<Owned>(owned);  // never destroyed
  return true;
}

}  // namespace quorvance
