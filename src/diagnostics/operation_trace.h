#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/out_of_memory.h"
#include "diagnostics/tracing_manager.h"

namespace quorvance {

/// What a reply adds to the trace entry of its operation. A value of its own: a completion keeps it
/// and uses it while the operation goes on, or after its end.
class TraceContinuation {
 public:
  TraceContinuation(TracingManager& tracing, std::optional<LoggingData> record)
      : tracing_(&tracing), record_(std::move(record)) {}

  /// Whether anything is recorded: texts that are dear to make are made only then.
  bool isEnabled() const { return record_.has_value(); }
  void append(std::string text) { tracing_->traceAppend(isEnabled(), record_, std::move(text)); }

 private:
  TracingManager* tracing_;
  std::optional<LoggingData> record_;
};

/// The trace entry of one operation of the manager, from here to the end of its scope: what is
/// opened first ends last. The level is read once, when it is opened, and the arguments are put
/// into words only when it is on. An empty name, which is of static storage, leaves no entry.
class OperationTrace {
 public:
  OperationTrace(TracingManager& tracing, std::string_view name)
      : OperationTrace(tracing, name, [] { return std::vector<std::string>(); }) {}
  template <class MakeArguments>
  OperationTrace(TracingManager& tracing, std::string_view name, MakeArguments&& makeArguments)
      : tracing_(tracing) {
    // An entry that finds no memory is not worth the operation.
    hasMemoryFor([&] {
      if (!name.empty() && tracing.isOn(TraceLevel::qvManager)) {
        record_ = start(tracing, name, makeArguments());
      }
    });
  }
  ~OperationTrace() {
    if (record_) end();
  }
  OperationTrace(const OperationTrace&) = delete;
  OperationTrace& operator=(const OperationTrace&) = delete;

  /// The entry never ends.
  void leaveOpen() { record_.reset(); }
  TraceContinuation continuation() const { return {tracing_, record_}; }
  /// For another operation with the same arguments; null where nothing is recorded.
  TraceArguments arguments() const { return record_ ? record_->call->paramList : nullptr; }

 private:
  static std::optional<LoggingData> start(TracingManager& tracing, std::string_view name,
                                          std::vector<std::string> arguments) {
    return tracing.traceStart(true, name, std::move(arguments));
  }
  static std::optional<LoggingData> start(TracingManager& tracing, std::string_view name,
                                          TraceArguments arguments) {
    return tracing.traceStartWith(name, std::move(arguments));
  }
  void end() noexcept;

  TracingManager& tracing_;
  std::optional<LoggingData> record_;
};

}  // namespace quorvance
