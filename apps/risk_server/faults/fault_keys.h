// The words of a fault, each with the reader of its value. fault_reader.h tells what they mean.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>

#include "apps/risk_server/faults/fault.h"

namespace risk_server {

inline constexpr std::uint64_t kMaxMadeBodyBytes = std::uint64_t{32} << 20;
inline constexpr std::uint64_t kMaxTrickle = 1'000'000;

// A fault has at most one body and one transfer.
enum class KeyRole {
  kScope,     // to which calls it is applied
  kHead,      // when the reply comes and what its head says
  kBody,      // another body
  kTransfer,  // how the reply breaks
};

struct FaultKey {
  KeyRole role = KeyRole::kScope;
  // Throws InputError naming the place.
  std::function<void(Fault& fault, const Json& value, const std::string& place)> read;
};

const std::map<std::string, FaultKey>& faultKeys();

}  // namespace risk_server
