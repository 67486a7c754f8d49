#pragma once

#include <memory>
#include <mutex>
#include <optional>

#include "base/bounded_mutex.h"
#include "quorvance/platform/device_facts.h"

namespace quorvance {

/// Reads the system's facts for everybody who asks, one call at a time. The hardware and the
/// operating system do not change under a running process: they are those of the first reading, on
/// whichever background thread asks first. Where the user is and how the device is named may
/// change: readAgain() tells those of now. Any thread that may wait for the disk.
class SystemFactsReader {
 public:
  /// Without a source all is unknown.
  explicit SystemFactsReader(std::shared_ptr<FactSource<SystemFacts>> source);

  /// Of the first reading, which is made now if there was none. Absent, which is no answer, when
  /// another thread has been making it for two seconds: it may never end.
  std::optional<SystemFacts> read();
  /// The same with the name, the locale and the time zone of now.
  std::optional<SystemFacts> readAgain();

 private:
  std::optional<SystemFacts> first() const;
  SystemFacts readSource();

  const std::shared_ptr<FactSource<SystemFacts>> source_;
  /// Held while the source reads.
  BoundedMutex reading_;
  mutable std::mutex mutex_;
  std::optional<SystemFacts> first_;
};

}  // namespace quorvance
