#include "apps/risk_server/contract/contract_rule.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>

namespace risk_server {
namespace {

// Longer texts are refused by a pattern unseen.
constexpr std::size_t kMaxPatternTextBytes = std::size_t{64} << 10;
constexpr std::size_t kMaxListedWords = 20;

bool fitsInteger(const Json& value) {
  if (!value.is_number_integer()) return false;
  return !value.is_number_unsigned() ||
         value.get<std::uint64_t>() <=
             static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
}

bool isOfType(const Json& value, ValueType type) {
  switch (type) {
    case ValueType::kText:
      return value.is_string();
    case ValueType::kInteger:
      return fitsInteger(value);
    case ValueType::kNumber:
      return value.is_number();
    case ValueType::kBoolean:
      return value.is_boolean();
    case ValueType::kObject:
      return value.is_object();
    case ValueType::kArray:
      return value.is_array();
    case ValueType::kAny:
      return true;
  }
  return false;
}

const char* nameOfType(ValueType type) {
  constexpr std::array<const char*, 7> kNames = {"a text",    "an integer", "a number", "a boolean",
                                                 "an object", "an array",   "a value"};
  return kNames.at(static_cast<std::size_t>(type));
}

std::string expectedButGot(const std::string& expected, const Json& value) {
  return "expected " + expected + ", got " + quoteForMessage(value);
}

std::string listOfValues(const std::vector<Json>& values) {
  if (values.size() == 1) return dumpServerJson(values.front());
  std::string list = "one of ";
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (i == kMaxListedWords) return list + ", ... (" + std::to_string(values.size()) + " words)";
    list += (i == 0 ? "" : ", ") + dumpServerJson(values[i]);
  }
  return list;
}

// The shortest front part of the path that leads nowhere.
std::string firstMissing(const Json& value, const std::string& path) {
  for (auto dot = path.find('.'); dot != std::string::npos; dot = path.find('.', dot + 1)) {
    if (findPath(value, path.substr(0, dot)) == nullptr) return path.substr(0, dot);
  }
  return path;
}

}  // namespace

std::vector<Mismatch> ContractRule::mismatchesOf(const Json& value) const {
  MismatchList found;
  check(value, CheckedPlace(), found);
  return found.take();
}

std::optional<Mismatch> ContractRule::firstMismatchOf(const Json& value) const {
  auto found = mismatchesOf(value);
  return found.empty() ? std::nullopt : std::optional(std::move(found.front()));
}

void TypeRule::check(const Json& value, const CheckedPlace& place, MismatchList& found) const {
  if (!isOfType(value, type_)) found.add(place, expectedButGot(nameOfType(type_), value));
}

void ValuesRule::check(const Json& value, const CheckedPlace& place, MismatchList& found) const {
  if (std::find(values_.begin(), values_.end(), value) != values_.end()) return;
  found.add(place, expectedButGot(listOfValues(values_), value));
}

PatternRule::PatternRule(const std::string& expression, std::string called)
    : called_(std::move(called)) {
  const int fault = regcomp(&compiled_, expression.c_str(), REG_EXTENDED | REG_NOSUB);
  if (fault == 0) return;
  std::array<char, 256> text{};
  regerror(fault, &compiled_, text.data(), text.size());
  throw InputError("\"" + expression + "\": " + text.data());
}

PatternRule::~PatternRule() { regfree(&compiled_); }

void PatternRule::check(const Json& value, const CheckedPlace& place, MismatchList& found) const {
  if (!value.is_string()) return found.add(place, expectedButGot(called_, value));
  const auto& text = value.get_ref<const std::string&>();
  // A text with a NUL inside would be matched up to there only.
  const bool matchable =
      text.size() <= kMaxPatternTextBytes && text.find('\0') == std::string::npos;
  if (matchable && regexec(&compiled_, text.c_str(), 0, nullptr, 0) == 0) return;
  found.add(place, expectedButGot(called_, value));
}

void ObjectRule::check(const Json& value, const CheckedPlace& place, MismatchList& found) const {
  if (!value.is_object()) return found.add(place, expectedButGot("an object", value));
  if (shape_.orEmpty && value.empty()) return;
  checkFields(value, place, found);
  checkUnknownKeys(value, place, found);
  checkSame(value, place, found);
  checkLengths(value, place, found);
}

bool ObjectRule::hasOnlyListedKeys(const Json& value) const {
  const auto& listed = shape_.orOnly;
  for (const auto& [key, member] : value.items()) {
    if (std::find(listed.begin(), listed.end(), key) == listed.end()) return false;
  }
  return !listed.empty();
}

void ObjectRule::checkFields(const Json& value, const CheckedPlace& place,
                             MismatchList& found) const {
  const bool isShort = hasOnlyListedKeys(value);
  const auto& listed = shape_.orOnly;
  for (const FieldRule& field : shape_.fields) {
    const Json* member = findMember(value, field.key);
    if (member == nullptr) {
      const bool isExempt =
          isShort && std::find(listed.begin(), listed.end(), field.key) == listed.end();
      if (field.required && !isExempt) found.add(CheckedPlace(place, field.key), "missing");
      continue;
    }
    field.rule->check(*member, CheckedPlace(place, field.key), found);
  }
}

void ObjectRule::checkUnknownKeys(const Json& value, const CheckedPlace& place,
                                  MismatchList& found) const {
  if (shape_.open) return;
  for (const auto& [key, member] : value.items()) {
    const auto known = std::any_of(shape_.fields.begin(), shape_.fields.end(),
                                   [&key = key](const FieldRule& f) { return f.key == key; });
    if (!known) found.add(CheckedPlace(place, key), "not expected here");
  }
}

void ObjectRule::checkSame(const Json& value, const CheckedPlace& place,
                           MismatchList& found) const {
  for (const auto& [left, right] : shape_.same) {
    const Json* one = findPath(value, left);
    const Json* other = findPath(value, right);
    if (one == nullptr || other == nullptr || *one == *other) continue;
    found.addBelow(place, right,
                   "expected the value of " + left + " (" + quoteForMessage(*one) + "), got " +
                       quoteForMessage(*other));
  }
}

void ObjectRule::checkLengths(const Json& value, const CheckedPlace& place,
                              MismatchList& found) const {
  const auto compare = [&](const PathPairs& pairs, const char* wanted, auto isRight) {
    for (const auto& [left, right] : pairs) {
      const Json* one = findPath(value, left);
      const Json* other = findPath(value, right);
      if (one == nullptr || other == nullptr || isRight(one->size(), other->size())) continue;
      found.addBelow(place, left,
                     wanted + right + " (" + std::to_string(other->size()) + "), got " +
                         std::to_string(one->size()));
    }
  };
  compare(shape_.sameLength, "expected as many members as ", std::equal_to<>());
  compare(shape_.noLonger, "expected no more members than ", std::less_equal<>());
}

void ColumnsRule::check(const Json& value, const CheckedPlace& place, MismatchList& found) const {
  if (!value.is_array()) return found.add(place, expectedButGot("an array", value));
  if (value.size() != required_ && value.size() != columns_.size()) {
    const std::string more =
        required_ == columns_.size() ? "" : " or " + std::to_string(columns_.size());
    return found.add(place, expectedButGot(std::to_string(required_) + more + " columns", value));
  }
  for (std::size_t i = 0; i < value.size() && !found.isFull(); ++i) {
    columns_[i]->check(value[i], CheckedPlace(place, i), found);
  }
}

void ArrayRule::check(const Json& value, const CheckedPlace& place, MismatchList& found) const {
  if (!value.is_array()) return found.add(place, expectedButGot("an array", value));
  if (value.size() < bounds_.atLeast) {
    found.add(place,
              expectedButGot("at least " + std::to_string(bounds_.atLeast) + " items", value));
  } else if (value.size() > bounds_.atMost) {
    found.add(place, expectedButGot("at most " + std::to_string(bounds_.atMost) + " items", value));
  } else {
    for (std::size_t i = 0; i < value.size() && !found.isFull(); ++i) {
      items_->check(value[i], CheckedPlace(place, i), found);
    }
  }
}

void KeyChoiceRule::check(const Json& value, const CheckedPlace& place, MismatchList& found) const {
  (findMember(value, key_) != nullptr ? present_ : absent_)->check(value, place, found);
}

void SelectRule::check(const Json& value, const CheckedPlace& place, MismatchList& found) const {
  if (!value.is_object()) return found.add(place, expectedButGot("an object", value));
  const Json* word = findPath(value, path_);
  if (word == nullptr) return found.addBelow(place, firstMissing(value, path_), "missing");
  std::vector<Json> words;
  for (const auto& [name, rule] : cases_) {
    words.emplace_back(name);
    if (*word == words.back()) return rule->check(value, place, found);
  }
  found.addBelow(place, path_, expectedButGot(listOfValues(words), *word));
}

}  // namespace risk_server
