#include "state/class_flags.h"

#include <atomic>

namespace quorvance {
namespace {

std::atomic<bool> collectSwitch{false};

}  // namespace

bool sessionDataCollect() noexcept { return collectSwitch.load(std::memory_order_relaxed); }

void setSessionDataCollect(bool on) noexcept { collectSwitch.store(on, std::memory_order_relaxed); }

}  // namespace quorvance
