#include "apps/risk_server/verdicts/counted_rules.h"

#include "apps/risk_server/http/text_codecs.h"

namespace risk_server {

VerdictQuestion verdictQuestionOf(const Json& body) {
  VerdictQuestion question;
  question.checkpoint = findText(body, "keys.checkpoint").value_or("");
  question.user = percentDecode(findText(body, "keys.user_id").value_or(""));
  question.checkpointObject = findMember(body, question.checkpoint);
  return question;
}

std::optional<std::uint64_t> CountedRules::replace(VerdictRules rules,
                                                   std::optional<std::uint64_t> onlyVersion) {
  auto replacement = std::make_shared<const VerdictRules>(std::move(rules));
  const std::lock_guard lock(mutex_);
  if (onlyVersion && *onlyVersion != state_.version) return std::nullopt;
  state_.hits.assign(replacement->size(), 0);
  state_.undecided = 0;
  state_.rules = std::move(replacement);
  calls_.clear();
  return ++state_.version;
}

VerdictDecision CountedRules::decide(const std::string& path, VerdictQuestion question) {
  const std::lock_guard lock(mutex_);
  question.call = countCall(path, question.checkpoint);
  const VerdictDecision decision = state_.rules->decide(question);
  ++(decision.rule ? state_.hits[*decision.rule] : state_.undecided);
  return decision;
}

std::uint64_t CountedRules::countCall(const std::string& path, const std::string& checkpoint) {
  const auto key = std::make_pair(path, checkpoint);
  // A contract of the user's own may allow any word: those beyond the bound count as first calls.
  if (calls_.size() >= kMaxCountedVerdicts && !calls_.contains(key)) return 1;
  return ++calls_[key];
}

RulesState CountedRules::state() const {
  const std::lock_guard lock(mutex_);
  return state_;
}

}  // namespace risk_server
