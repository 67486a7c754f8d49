#pragma once

#include <atomic>
#include <cstdint>
#include <string_view>

#include "base/json.h"
#include "quorvance/platform/before_send.h"

namespace quorvance {

/// The host's hook over the bodies of calls. One call at a time; the count from any thread.
class Redaction {
 public:
  /// The hook must be there.
  explicit Redaction(BeforeSend hook);

  /// Lets the host change the body. False: the call must not be sent.
  bool apply(std::string_view url, Json& body);
  /// How many calls it has kept from being sent.
  std::uint64_t dropped() const { return dropped_; }

 private:
  bool drop(std::string_view service, std::string_view reason);

  const BeforeSend hook_;
  std::atomic<std::uint64_t> dropped_{0};
};

}  // namespace quorvance
