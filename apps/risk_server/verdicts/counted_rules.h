// The rules in force, and how often they were asked.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "apps/risk_server/verdicts/verdict_rules.h"

namespace risk_server {

// Calls are counted for this many pairs of path and checkpoint; the built-in contract has ten.
inline constexpr std::size_t kMaxCountedVerdicts = 1000;

// What a rule asks about, of the body of a checkpoint call, which must outlive it. `call` is 1.
VerdictQuestion verdictQuestionOf(const Json& body);

struct RulesState {
  std::shared_ptr<const VerdictRules> rules;
  std::uint64_t version = 0;        // one more with each replacement
  std::vector<std::uint64_t> hits;  // how often each rule decided
  std::uint64_t undecided = 0;      // how often none did
};

// Any thread, guarded by mutex_; rules are replaced whole.
class CountedRules {
 public:
  explicit CountedRules(VerdictRules rules) { replace(std::move(rules)); }

  // Calls and hits are counted anew. The new version; changes nothing and returns nothing when a
  // version is given and is not the one in force.
  std::optional<std::uint64_t> replace(VerdictRules rules,
                                       std::optional<std::uint64_t> onlyVersion = std::nullopt);

  // Numbers the call among those of its path and checkpoint, and counts the rule that decides.
  VerdictDecision decide(const std::string& path, VerdictQuestion question);

  RulesState state() const;

 private:
  std::uint64_t countCall(const std::string& path, const std::string& checkpoint);

  mutable std::mutex mutex_;
  RulesState state_;
  std::map<std::pair<std::string, std::string>, std::uint64_t> calls_;  // by path, checkpoint
};

}  // namespace risk_server
