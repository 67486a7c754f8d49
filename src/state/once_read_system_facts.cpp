#include "state/once_read_system_facts.h"

#include <chrono>
#include <mutex>
#include <utility>

namespace quorvance {
namespace {

constexpr std::chrono::seconds kMaxReadWait{2};

}  // namespace

OnceReadSystemFacts::OnceReadSystemFacts(std::shared_ptr<FactSource<SystemFacts>> source)
    : source_(std::move(source)) {}

SystemFacts OnceReadSystemFacts::read() {
  const std::unique_lock lock(mutex_, std::chrono::steady_clock::now() + kMaxReadWait);
  if (!lock) return {};
  if (!facts_) facts_ = source_->read();
  return *facts_;
}

}  // namespace quorvance
