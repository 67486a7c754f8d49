// The rules of the contract file: what a JSON value must look like.
//
// A rule is immutable once read and may be used by any thread. contract_reader.h says how each kind
// is written in the file.
#pragma once

#include <regex.h>

#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "apps/risk_server/contract/mismatch.h"
#include "apps/risk_server/server_json.h"

namespace risk_server {

class ContractRule {
 public:
  virtual ~ContractRule() = default;

  // Everything that is wrong with the value, in the order of the rule.
  std::vector<Mismatch> mismatchesOf(const Json& value) const;
  std::optional<Mismatch> firstMismatchOf(const Json& value) const;

  // As a part of the check of a larger value, in which this one stands at the place.
  virtual void check(const Json& value, const CheckedPlace& place, MismatchList& found) const = 0;
};

using RulePointer = std::shared_ptr<const ContractRule>;

enum class ValueType { kText, kInteger, kNumber, kBoolean, kObject, kArray, kAny };

// Any value of one type. An integer fits 64 bits with sign and is written without a fraction.
class TypeRule : public ContractRule {
 public:
  explicit TypeRule(ValueType type) : type_(type) {}
  void check(const Json& value, const CheckedPlace& place, MismatchList& found) const override;

 private:
  ValueType type_;
};

// One of the listed values.
class ValuesRule : public ContractRule {
 public:
  explicit ValuesRule(std::vector<Json> values) : values_(std::move(values)) {}
  void check(const Json& value, const CheckedPlace& place, MismatchList& found) const override;

 private:
  std::vector<Json> values_;
};

// A text that an extended regular expression of POSIX matches; messages use the expression's name.
class PatternRule : public ContractRule {
 public:
  // Throws InputError when the expression is none.
  PatternRule(const std::string& expression, std::string called);
  ~PatternRule() override;
  PatternRule(const PatternRule&) = delete;
  PatternRule& operator=(const PatternRule&) = delete;
  void check(const Json& value, const CheckedPlace& place, MismatchList& found) const override;

 private:
  regex_t compiled_{};
  std::string called_;
};

struct FieldRule {
  std::string key;
  bool required = true;
  RulePointer rule;
};

// Dotted paths of two values.
using PathPairs = std::vector<std::pair<std::string, std::string>>;

struct ObjectShape {
  std::vector<FieldRule> fields;
  bool open = false;                // other keys may stand beside the fields
  bool orEmpty = false;             // {} is right too
  std::vector<std::string> orOnly;  // an object of these keys alone need have no others
  PathPairs same;                   // whose values are equal
  PathPairs sameLength;             // whose values have as many members
  PathPairs noLonger;               // the first has no more members than the second
};

class ObjectRule : public ContractRule {
 public:
  explicit ObjectRule(ObjectShape shape) : shape_(std::move(shape)) {}
  void check(const Json& value, const CheckedPlace& place, MismatchList& found) const override;
  const ObjectShape& shape() const { return shape_; }

 private:
  void checkUnknownKeys(const Json& value, const CheckedPlace& place, MismatchList& found) const;
  void checkFields(const Json& value, const CheckedPlace& place, MismatchList& found) const;
  bool hasOnlyListedKeys(const Json& value) const;
  void checkSame(const Json& value, const CheckedPlace& place, MismatchList& found) const;
  void checkLengths(const Json& value, const CheckedPlace& place, MismatchList& found) const;

  ObjectShape shape_;
};

class ArrayRule : public ContractRule {
 public:
  struct Bounds {
    std::size_t atLeast = 0;
    std::size_t atMost = std::numeric_limits<std::size_t>::max();
  };
  ArrayRule(RulePointer items, Bounds bounds) : items_(std::move(items)), bounds_(bounds) {}
  void check(const Json& value, const CheckedPlace& place, MismatchList& found) const override;

 private:
  RulePointer items_;
  Bounds bounds_;
};

// A row: one value for each column. The columns behind the required ones are there all or none.
class ColumnsRule : public ContractRule {
 public:
  ColumnsRule(std::vector<RulePointer> columns, std::size_t required)
      : columns_(std::move(columns)), required_(required) {}
  void check(const Json& value, const CheckedPlace& place, MismatchList& found) const override;

 private:
  std::vector<RulePointer> columns_;
  std::size_t required_;
};

// One rule for objects that have a key, another for all other values.
class KeyChoiceRule : public ContractRule {
 public:
  KeyChoiceRule(std::string key, RulePointer present, RulePointer absent)
      : key_(std::move(key)), present_(std::move(present)), absent_(std::move(absent)) {}
  void check(const Json& value, const CheckedPlace& place, MismatchList& found) const override;

 private:
  std::string key_;
  RulePointer present_;
  RulePointer absent_;
};

// The rule is chosen by the text at a dotted path inside of the value.
class SelectRule : public ContractRule {
 public:
  SelectRule(std::string path, std::vector<std::pair<std::string, RulePointer>> cases)
      : path_(std::move(path)), cases_(std::move(cases)) {}
  void check(const Json& value, const CheckedPlace& place, MismatchList& found) const override;

 private:
  std::string path_;
  std::vector<std::pair<std::string, RulePointer>> cases_;
};

}  // namespace risk_server
