#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "base/json.h"

namespace quorvance {

/// The phase of a traced operation (spelled so, as the interface is). End is raw 1, before Middle.
enum class StatusLogginType : std::uint8_t { start = 0, end = 1, middle = 2 };

/// The arguments of a traced operation as text, shared by the entries that tell of them: a
/// checkpoint's text is long. Null stands for none.
using TraceArguments = std::shared_ptr<const std::vector<std::string>>;

/// One trace record. A plain value: copies share what does not change, so that a completion keeps
/// its own and no lock is needed. There may be a hundred thousand of them.
struct LoggingData {
  /// What is traced; the same for every entry of one operation.
  struct Call {
    std::thread::id thread;
    /// Of static storage.
    std::string_view methodName;
    TraceArguments paramList;
  };

  /// Milliseconds since 1970.
  std::int64_t timestamp = 0;
  /// Never null.
  std::shared_ptr<const Call> call;
  StatusLogginType statusLogginType = StatusLogginType::start;

  Json getJson() const;
};

}  // namespace quorvance
