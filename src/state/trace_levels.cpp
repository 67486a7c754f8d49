#include "state/trace_levels.h"

#include "base/fatal.h"

namespace quorvance {
namespace {

// Two bits a level: it is known, it is on. One more: there is a record at all.
constexpr std::uint32_t kHasRecord = 1U << 8;

constexpr std::uint32_t knownBit(TraceLevel level) { return 1U << (2 * static_cast<int>(level)); }
constexpr std::uint32_t onBit(TraceLevel level) { return knownBit(level) << 1; }
static_assert(onBit(TraceLevel::faceVerification) < kHasRecord, "the last level finds its bits");

std::uint32_t bitsOf(TraceLevel level, const std::optional<bool>& value) {
  if (!value) return 0;
  return knownBit(level) | (*value ? onBit(level) : 0);
}

}  // namespace

void TraceLevels::set(const std::optional<TracingDataQvData>& levels) {
  if (!levels) {
    bits_.store(0);
    return;
  }
  maxTraceData_.store(levels->maxTraceData);
  bits_.store(kHasRecord | bitsOf(TraceLevel::exceptions, levels->levelException) |
              bitsOf(TraceLevel::qvManager, levels->levelQvManager) |
              bitsOf(TraceLevel::sendingData, levels->levelSendingData) |
              bitsOf(TraceLevel::faceVerification, levels->levelFaceVerificationData));
}

bool TraceLevels::isOn(TraceLevel level) const {
  const std::uint32_t bits = bits_.load(std::memory_order_relaxed);
  if ((bits & knownBit(level)) == 0) fatalError("the configuration lacks a trace level");
  return (bits & onBit(level)) != 0;
}

std::optional<std::int64_t> TraceLevels::maxTraceData() const {
  if ((bits_.load() & kHasRecord) == 0) return std::nullopt;
  return maxTraceData_.load();
}

}  // namespace quorvance
