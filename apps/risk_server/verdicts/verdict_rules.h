// Which risk the server answers for a checkpoint.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "apps/risk_server/server_json.h"

namespace risk_server {

// What a rule may ask about.
struct VerdictQuestion {
  std::string checkpoint;                  // the wire word
  std::string user;                        // percent-decoded
  const Json* checkpointObject = nullptr;  // the checkpoint itself: amounts, currencies, countries
  std::uint64_t call = 1;  // its number among those of its path and checkpoint, from 1
};

struct VerdictDecision {
  int risk = -1;                    // "undefined" when no rule applies
  std::optional<std::size_t> rule;  // the index of the rule that decided
};

using VerdictCondition = std::function<bool(const VerdictQuestion&)>;

// An ordered list: the first rule whose conditions all hold decides. Immutable: any thread.
class VerdictRules {
 public:
  // An array of {CONDITION: VALUE, ..., "risk": WORD}; a rule without conditions always holds.
  //   "checkpoint": WORD                the type of the checkpoint
  //   "user": TEXT                      the user identifier, percent-decoded
  //   "amountAtLeast", "amountBelow": NUMBER
  //   "currency": TEXT                  of the amount, three capital letters
  //   "country": TEXT                   of the user's, the billing or the shipping address: any one
  //   "nth": N                          only the N-th call
  //   "everyNth": N                     the calls N, 2N, 3N, ...
  // A checkpoint without the value that is asked for fails the condition. Throws InputError naming
  // the place.
  static VerdictRules fromJson(const Json& json);

  VerdictDecision decide(const VerdictQuestion& question) const;

  // As they were written.
  const Json& asJson() const { return given_; }
  std::size_t size() const { return rules_.size(); }

 private:
  struct Rule {
    std::vector<VerdictCondition> conditions;
    int risk = -1;
  };
  static Rule readRule(const Json& json, const std::string& place);

  Json given_ = Json::array();
  std::vector<Rule> rules_;
};

}  // namespace risk_server
