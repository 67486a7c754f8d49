#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "diagnostics/tracing_manager.h"

namespace quorvance {

/// The trace entry of one operation of the manager. The level is read once, when it is opened, and
/// the arguments are put into words only when it is on. A copy is what a completion keeps: both may
/// be used at once. An entry that is never closed stays open.
class OperationTrace {
 public:
  template <class MakeArguments>
  OperationTrace(TracingManager& tracing, bool enabled, std::string_view name,
                 MakeArguments&& makeArguments)
      : tracing_(&tracing), enabled_(enabled) {
    if (enabled) record_ = tracing.traceStart(true, name, makeArguments());
  }

  void append(std::string text) { tracing_->traceAppend(enabled_, record_, std::move(text)); }
  void close() { tracing_->traceEnd(enabled_, record_); }
  bool isEnabled() const { return enabled_; }

 private:
  TracingManager* tracing_;
  bool enabled_;
  std::optional<LoggingData> record_;
};

}  // namespace quorvance
