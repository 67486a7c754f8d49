#pragma once

#include <cstdint>

namespace quorvance {

/// From now on one allocation in `oneIn` fails, chosen by the seed; none while an exception unwinds
/// the stack, which is where the JSON library's destructor would end the process.
void startFailing(std::uint64_t seed, std::uint64_t oneIn);
/// How many have failed.
std::uint64_t stopFailing();

/// Who runs on the calling thread, until the end of the scope. Allocations of the host never fail;
/// a thread begins as the library's.
class RunningCode {
 public:
  enum class Owner { library, host };
  explicit RunningCode(Owner owner);
  ~RunningCode();
  RunningCode(const RunningCode&) = delete;
  RunningCode& operator=(const RunningCode&) = delete;

 private:
  const Owner before_;
};

}  // namespace quorvance
