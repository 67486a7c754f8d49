// What a risk server says it has been asked.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace demo_host {

inline constexpr std::chrono::seconds kServerAnswerTime{5};

struct Tally {
  // Accepted calls by full path.
  std::map<std::string, std::int64_t> calls;
  std::int64_t refused = 0;
};

// The calls of `tally` that `before` has not; a path without any is left out.
Tally since(const Tally& before, const Tally& tally);

// How many of `expected` have not arrived, counting each refused call as one of them.
std::int64_t missingCalls(const std::map<std::string, std::int64_t>& expected, const Tally& tally);

// Reads a reply of the tally's path; nothing when it is no tally.
std::optional<Tally> tallyFromReply(const std::string& reply);

// Asks the server; nothing when it answers but keeps no tally. Throws RunError when it does not
// answer. `url` ends in a slash.
std::optional<Tally> fetchTally(const std::string& url);

// Asks again until nothing of `expected` is missing since `before`, or the time is over. The last
// answer.
Tally waitForCalls(const std::string& url, const Tally& before,
                   const std::map<std::string, std::int64_t>& expected,
                   std::chrono::milliseconds time);

}  // namespace demo_host
