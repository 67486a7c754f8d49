#include "quorvance/verdict.h"

#include <array>
#include <cstddef>

namespace quorvance {
namespace {

// In the order of the enumerators.
constexpr std::array<std::string_view, 11> kReasonNames = {
    "answered",     "unreadable", "refused",  "timedOut",      "unreachable", "certificate",
    "cannotBeSent", "notSetUp",   "shutDown", "collectionOff", "givenUp"};
static_assert(static_cast<std::size_t>(VerdictReason::givenUp) + 1 == kReasonNames.size());
static_assert(kReasonNames[static_cast<std::size_t>(VerdictReason::certificate)] == "certificate");

}  // namespace

std::string_view toString(VerdictReason reason) {
  const auto index = static_cast<std::size_t>(reason);
  return index < kReasonNames.size() ? kReasonNames[index] : std::string_view();
}

}  // namespace quorvance
