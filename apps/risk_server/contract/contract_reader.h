// Reads the rules of a contract file.
//
// A rule is written as one of
//   "text", "integer", "number", "boolean", "object", "array", "any"   any value of the type
//   "NAME"                                  the rule of that name under "definitions"
//   {"is": VALUE}                           exactly this value
//   {"oneOf": [VALUE, ...]}                 one of these values
//   {"pattern": REGEX, "called": TEXT}      a text; TEXT names the pattern in messages
//   {"items": RULE, "atLeast": N, "atMost": N}      an array
//   {"columns": [RULE, ...]}                an array of one value for each rule
//       "orMore": [RULE, ...]  these too, all or none
//   {"fields": {"KEY": RULE, "KEY?": RULE}, ...}    an object; "?" marks a key that may be absent
//       "with": [NAME, ...]    takes over the fields of other objects; own fields replace them
//       "open": true           keys other than the fields are allowed
//       "orEmpty": true        {} is right too
//       "orOnly": [KEY, ...]   an object that has no other keys need not have the other fields
//       "same": [[PATH, PATH]] the two values are equal where both are there
//       "sameLength": [[PATH, PATH]]   the two have as many members where both are there
//       "noLonger": [[PATH, PATH]]     the first has no more members than the second
//   {"ifHas": KEY, "then": RULE, "else": RULE}      by the presence of a key
//   {"select": PATH, "cases": {"WORD": RULE}}       by the text at a path, such as
//   "keys.checkpoint"
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "apps/risk_server/contract/contract_rule.h"

namespace risk_server {

class ContractReader {
 public:
  // `definitions` must outlive the reader. Throws InputError naming the place.
  explicit ContractReader(const Json& definitions);

  // `place` is where `rule` stands, for messages.
  RulePointer read(const Json& rule, const std::string& place);

 private:
  RulePointer readNamed(const std::string& name, const std::string& place);
  RulePointer readObject(const Json& rule, const std::string& place);
  RulePointer readArray(const Json& rule, const std::string& place);
  RulePointer readColumns(const Json& rule, const std::string& place);
  std::vector<RulePointer> readRules(const Json& rules, const std::string& place);
  RulePointer readSelect(const Json& rule, const std::string& place);
  void takeOver(const Json& names, const std::string& place, ObjectShape& shape);

  const Json& definitions_;
  std::map<std::string, RulePointer> read_;
  std::set<std::string> beingRead_;
};

}  // namespace risk_server
