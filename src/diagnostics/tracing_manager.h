#pragma once

// What happened, kept until it is sent: traces in memory, reports on disk, crashes. Nothing here
// sends anything. Start reading at tracing_manager.h and report_store.h.

#include <cstddef>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "diagnostics/error_log_data.h"
#include "diagnostics/logging_data.h"
#include "quorvance/platform_error.h"
#include "state/inner_quorvance_data.h"
#include "state/system_texts.h"

namespace quorvance {

/// The in-memory log of what the library did. Any thread, guarded by one mutex. Entries stay flat
/// records; they become JSON when they are sent.
class TracingManager {
 public:
  /// An error record is large and rare: it stands apart, so that entries stay small.
  using Entry = std::variant<LoggingData, std::shared_ptr<const ErrorLogData>>;

  TracingManager(std::shared_ptr<InnerQuorvanceData> state, std::shared_ptr<SystemTexts> texts);

  /// Whether the configuration in force records this level.
  bool isOn(TraceLevel level) const { return state_->traceLevels().isOn(level); }

  /// Absent when not enabled. Otherwise the record is returned even when the buffer refuses its
  /// entry; the caller keeps it for the end. `methodName` is of static storage.
  std::optional<LoggingData> traceStart(bool enabled, std::string_view methodName,
                                        std::vector<std::string> paramList);
  /// The same, enabled, with arguments that several operations share.
  LoggingData traceStartWith(std::string_view methodName, TraceArguments arguments);
  /// Adds a second entry for the record, marked "End" and restamped.
  void traceEnd(bool enabled, std::optional<LoggingData>& record);
  /// The record gains the text as one more parameter and is added again, marked "Middle".
  void traceAppend(bool enabled, std::optional<LoggingData>& record, std::string text);
  /// Recorded whatever the levels say.
  void traceException(const PlatformError& error);

  /// Refused, in silence, when the configuration has no cap or more entries than the cap are held:
  /// one more than the cap fits, and that is intended.
  void add(Entry entry);
  void clear();
  bool isEmpty() const;
  std::size_t size() const;
  /// All entries, in order.
  std::vector<Entry> snapshot() const;
  /// A JSON array of all entries, in order. Not for a thread of the host's: errors get the system's
  /// version, which may have to be read.
  Json entries() const;

 private:
  void addRestamped(LoggingData& record, StatusLogginType status);

  const std::shared_ptr<InnerQuorvanceData> state_;
  const std::shared_ptr<SystemTexts> texts_;
  mutable std::mutex mutex_;
  std::vector<Entry> dataLogging_;
};

}  // namespace quorvance
