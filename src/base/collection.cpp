#include "base/collection.h"

#include <atomic>

namespace quorvance {
namespace {

std::atomic<bool> collectionEnabled{true};
static_assert(std::atomic<bool>::is_always_lock_free);

}  // namespace

bool isCollectionEnabled() noexcept { return collectionEnabled.load(); }

void setCollectionEnabled(bool on) noexcept { collectionEnabled.store(on); }

}  // namespace quorvance
