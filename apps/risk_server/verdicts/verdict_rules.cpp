#include "apps/risk_server/verdicts/verdict_rules.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <string_view>
#include <utility>

namespace risk_server {
namespace {

constexpr std::size_t kMaxRules = 10'000;
constexpr int kUndefinedRisk = -1;

constexpr std::array<std::pair<std::string_view, int>, 6> kRiskWords = {{
    {"expire", -2},
    {"undefined", kUndefinedRisk},
    {"LOW", 0},
    {"MEDIUM", 1},
    {"HIGH", 2},
    {"VERY_HIGH", 3},
}};

constexpr std::array<std::string_view, 10> kCheckpointWords = {
    "LAUNCH",      "REGISTER",         "LOGIN",
    "TRANSACTION", "UPDATE_DETAILS",   "ADD_PAYMENT_METHOD",
    "GENERAL",     "UPDATE_USER_INFO", "PASSWORD_CHANGE",
    "NONE"};

// Where the person and the goods are; the merchant's own address says nothing about either.
constexpr std::array<std::string_view, 3> kCountryPaths = {
    "user.user_address.country", "billingAddress.country", "shippingAddress.country"};

std::string ruleText(const Json& value, const std::string& place) {
  if (!value.is_string()) {
    throw InputError(place + ": expected a text, got " + quoteForMessage(value));
  }
  return value.get<std::string>();
}

int riskFromWord(const Json& value, const std::string& place) {
  const std::string word = ruleText(value, place);
  const auto found = std::find_if(kRiskWords.begin(), kRiskWords.end(),
                                  [&](const auto& entry) { return entry.first == word; });
  if (found == kRiskWords.end()) throw InputError(place + ": \"" + word + "\" is no risk level");
  return found->second;
}

VerdictCondition checkpointCondition(const Json& value, const std::string& place) {
  const std::string word = ruleText(value, place);
  if (std::find(kCheckpointWords.begin(), kCheckpointWords.end(), word) == kCheckpointWords.end()) {
    throw InputError(place + ": \"" + word + "\" is no checkpoint type");
  }
  return [word](const VerdictQuestion& question) { return question.checkpoint == word; };
}

VerdictCondition userCondition(const Json& value, const std::string& place) {
  return [user = ruleText(value, place)](const VerdictQuestion& question) {
    return question.user == user;
  };
}

double ruleNumber(const Json& value, const std::string& place) {
  if (!value.is_number()) {
    throw InputError(place + ": expected a number, got " + quoteForMessage(value));
  }
  return value.get<double>();
}

std::uint64_t ruleCount(const Json& value, const std::string& place) {
  if (!value.is_number_unsigned() || value.get<std::uint64_t>() == 0) {
    throw InputError(place + ": expected a number from 1, got " + quoteForMessage(value));
  }
  return value.get<std::uint64_t>();
}

std::optional<double> amountOf(const VerdictQuestion& question) {
  if (question.checkpointObject == nullptr) return std::nullopt;
  const Json* amount = findMember(*question.checkpointObject, "amount");
  if (amount == nullptr || !amount->is_number()) return std::nullopt;
  return amount->get<double>();
}

bool checkpointHasText(const VerdictQuestion& question, std::string_view path,
                       const std::string& text) {
  return question.checkpointObject != nullptr && findText(*question.checkpointObject, path) == text;
}

VerdictCondition amountAtLeastCondition(const Json& value, const std::string& place) {
  return [limit = ruleNumber(value, place)](const VerdictQuestion& question) {
    const auto amount = amountOf(question);
    return amount && *amount >= limit;
  };
}

VerdictCondition amountBelowCondition(const Json& value, const std::string& place) {
  return [limit = ruleNumber(value, place)](const VerdictQuestion& question) {
    const auto amount = amountOf(question);
    return amount && *amount < limit;
  };
}

VerdictCondition currencyCondition(const Json& value, const std::string& place) {
  const std::string code = ruleText(value, place);
  const auto isCapital = [](char c) { return c >= 'A' && c <= 'Z'; };
  if (code.size() != 3 || !std::all_of(code.begin(), code.end(), isCapital)) {
    throw InputError(place + ": \"" + code + "\" is no currency of three capital letters");
  }
  return [code](const VerdictQuestion& question) {
    return checkpointHasText(question, "curType", code);
  };
}

VerdictCondition countryCondition(const Json& value, const std::string& place) {
  return [country = ruleText(value, place)](const VerdictQuestion& question) {
    return std::any_of(kCountryPaths.begin(), kCountryPaths.end(), [&](std::string_view path) {
      return checkpointHasText(question, path, country);
    });
  };
}

VerdictCondition nthCondition(const Json& value, const std::string& place) {
  return
      [n = ruleCount(value, place)](const VerdictQuestion& question) { return question.call == n; };
}

VerdictCondition everyNthCondition(const Json& value, const std::string& place) {
  return [n = ruleCount(value, place)](const VerdictQuestion& question) {
    return question.call % n == 0;
  };
}

using ConditionReader = VerdictCondition (*)(const Json& value, const std::string& place);

// A further kind of condition is a further line here.
const std::map<std::string, ConditionReader>& conditionReaders() {
  static const std::map<std::string, ConditionReader> kReaders = {
      {"checkpoint", checkpointCondition},
      {"user", userCondition},
      {"amountAtLeast", amountAtLeastCondition},
      {"amountBelow", amountBelowCondition},
      {"currency", currencyCondition},
      {"country", countryCondition},
      {"nth", nthCondition},
      {"everyNth", everyNthCondition},
  };
  return kReaders;
}

}  // namespace

VerdictRules VerdictRules::fromJson(const Json& json) {
  if (!json.is_array()) throw InputError("expected an array of rules");
  if (json.size() > kMaxRules)
    throw InputError("more than " + std::to_string(kMaxRules) + " rules");
  VerdictRules rules;
  rules.given_ = json;
  for (std::size_t i = 0; i < json.size(); ++i) {
    rules.rules_.push_back(readRule(json[i], "[" + std::to_string(i) + "]"));
  }
  return rules;
}

VerdictRules::Rule VerdictRules::readRule(const Json& json, const std::string& place) {
  if (!json.is_object()) throw InputError(place + ": expected an object");
  const Json* risk = findMember(json, "risk");
  if (risk == nullptr) throw InputError(place + ".risk: missing");
  Rule rule;
  rule.risk = riskFromWord(*risk, place + ".risk");
  for (const auto& [key, value] : json.items()) {
    if (key == "risk") continue;
    const auto reader = conditionReaders().find(key);
    if (reader == conditionReaders().end()) {
      throw InputError(memberPlace(place, key) + ": no known condition");
    }
    rule.conditions.push_back(reader->second(value, memberPlace(place, key)));
  }
  return rule;
}

VerdictDecision VerdictRules::decide(const VerdictQuestion& question) const {
  const auto holds = [&](const VerdictCondition& condition) { return condition(question); };
  for (std::size_t i = 0; i < rules_.size(); ++i) {
    const Rule& rule = rules_[i];
    if (std::all_of(rule.conditions.begin(), rule.conditions.end(), holds)) return {rule.risk, i};
  }
  return {kUndefinedRisk, std::nullopt};
}

}  // namespace risk_server
