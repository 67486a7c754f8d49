#pragma once

#include <atomic>
#include <cstdint>
#include <optional>

#include "state/sdk_config.h"

namespace quorvance {

enum class TraceLevel { exceptions, qvManager, sendingData, faceVerification };

/// The trace part of the configuration in force, readable without a lock: it is asked at the start
/// of every operation. Any thread.
class TraceLevels {
 public:
  TraceLevels() { set(TracingDataQvData{}); }

  void set(const std::optional<TracingDataQvData>& levels);

  /// Whether entries of this level are recorded. A configuration without the level is a programming
  /// error and stops the process, rather than tracing blindly.
  bool isOn(TraceLevel level) const;

  /// How many entries the buffer may hold before one more is refused; absent accepts none.
  std::optional<std::int64_t> maxTraceData() const;

 private:
  std::atomic<std::uint32_t> bits_{0};
  std::atomic<std::int64_t> maxTraceData_{0};
};

}  // namespace quorvance
