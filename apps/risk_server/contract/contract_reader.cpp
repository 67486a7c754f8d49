#include "apps/risk_server/contract/contract_reader.h"

#include <algorithm>
#include <initializer_list>
#include <string_view>

namespace risk_server {
namespace {

[[noreturn]] void refuseRule(const std::string& place, const std::string& reason) {
  throw InputError(place + ": " + reason);
}

std::optional<ValueType> typeFromName(const std::string& name) {
  static const std::map<std::string, ValueType> kTypes = {
      {"text", ValueType::kText},     {"integer", ValueType::kInteger},
      {"number", ValueType::kNumber}, {"boolean", ValueType::kBoolean},
      {"object", ValueType::kObject}, {"array", ValueType::kArray},
      {"any", ValueType::kAny},
  };
  const auto found = kTypes.find(name);
  return found == kTypes.end() ? std::nullopt : std::optional(found->second);
}

void allowOnly(const Json& rule, std::initializer_list<std::string_view> keys,
               const std::string& place) {
  for (const auto& [key, value] : rule.items()) {
    if (std::find(keys.begin(), keys.end(), key) == keys.end()) {
      refuseRule(memberPlace(place, key), "not a part of this kind of rule");
    }
  }
}

const Json& requiredPart(const Json& rule, const std::string& key, const std::string& place) {
  const Json* part = findMember(rule, key);
  if (part == nullptr) refuseRule(memberPlace(place, key), "missing");
  return *part;
}

std::string textPart(const Json& rule, const std::string& key, const std::string& place) {
  const Json& part = requiredPart(rule, key, place);
  if (!part.is_string()) refuseRule(memberPlace(place, key), "expected a text");
  return part.get<std::string>();
}

bool flagPart(const Json& rule, const std::string& key, const std::string& place) {
  const Json* part = findMember(rule, key);
  if (part == nullptr) return false;
  if (!part->is_boolean()) refuseRule(memberPlace(place, key), "expected a boolean");
  return part->get<bool>();
}

std::size_t countPart(const Json& rule, const std::string& key, std::size_t absent,
                      const std::string& place) {
  const Json* part = findMember(rule, key);
  if (part == nullptr) return absent;
  if (!part->is_number_unsigned()) refuseRule(memberPlace(place, key), "expected a count");
  return part->get<std::size_t>();
}

RulePointer readValues(const Json& values, const std::string& place) {
  if (!values.is_array() || values.empty()) refuseRule(place, "expected an array of values");
  return std::make_shared<ValuesRule>(std::vector<Json>(values.begin(), values.end()));
}

RulePointer readPattern(const Json& rule, const std::string& place) {
  allowOnly(rule, {"pattern", "called"}, place);
  try {
    return std::make_shared<PatternRule>(textPart(rule, "pattern", place),
                                         textPart(rule, "called", place));
  } catch (const InputError& error) {
    refuseRule(place + ".pattern", error.what());
  }
}

void setField(ObjectShape& shape, FieldRule field) {
  const auto same = std::find_if(shape.fields.begin(), shape.fields.end(),
                                 [&](const FieldRule& f) { return f.key == field.key; });
  if (same == shape.fields.end()) {
    shape.fields.push_back(std::move(field));
  } else {
    *same = std::move(field);
  }
}

void readOnly(const Json& rule, const std::string& place, ObjectShape& shape) {
  const Json* keys = findMember(rule, "orOnly");
  if (keys == nullptr) return;
  const ArrayRule shapeOfKeys(std::make_shared<TypeRule>(ValueType::kText), {});
  if (const auto mismatch = shapeOfKeys.firstMismatchOf(*keys)) {
    refuseRule(place, mismatch->textUnder("orOnly"));
  }
  for (const Json& key : *keys) {
    shape.orOnly.push_back(key.get<std::string>());
    const bool known =
        std::any_of(shape.fields.begin(), shape.fields.end(),
                    [&](const FieldRule& field) { return field.key == shape.orOnly.back(); });
    if (!known) refuseRule(place + ".orOnly", "\"" + shape.orOnly.back() + "\" is no field");
  }
}

PathPairs readPairs(const Json& rule, const std::string& key, const std::string& place) {
  const Json* pairs = findMember(rule, key);
  if (pairs == nullptr) return {};
  const TypeRule text(ValueType::kText);
  const ArrayRule shapeOfPairs(
      std::make_shared<ArrayRule>(std::make_shared<TypeRule>(text), ArrayRule::Bounds{2, 2}), {});
  if (const auto mismatch = shapeOfPairs.firstMismatchOf(*pairs)) {
    refuseRule(place, mismatch->textUnder(key));
  }
  PathPairs read;
  for (const Json& pair : *pairs) {
    read.emplace_back(pair[0].get<std::string>(), pair[1].get<std::string>());
  }
  return read;
}

void append(PathPairs& pairs, const PathPairs& more) {
  pairs.insert(pairs.end(), more.begin(), more.end());
}

void readComparisons(const Json& rule, const std::string& place, ObjectShape& shape) {
  append(shape.same, readPairs(rule, "same", place));
  append(shape.sameLength, readPairs(rule, "sameLength", place));
  append(shape.noLonger, readPairs(rule, "noLonger", place));
}

}  // namespace

ContractReader::ContractReader(const Json& definitions) : definitions_(definitions) {
  if (!definitions.is_object()) refuseRule("definitions", "expected an object");
  for (const auto& [name, rule] : definitions.items()) {
    if (typeFromName(name)) refuseRule("definitions." + name, "is the name of a type");
    readNamed(name, "definitions." + name);
  }
}

RulePointer ContractReader::read(const Json& rule, const std::string& place) {
  if (rule.is_string()) return readNamed(rule.get<std::string>(), place);
  if (!rule.is_object()) refuseRule(place, "expected the name of a rule, or an object");
  if (const Json* value = findMember(rule, "is")) {
    allowOnly(rule, {"is"}, place);
    return std::make_shared<ValuesRule>(std::vector<Json>(1, *value));
  }
  if (const Json* values = findMember(rule, "oneOf")) {
    allowOnly(rule, {"oneOf"}, place);
    return readValues(*values, place + ".oneOf");
  }
  if (rule.contains("pattern")) return readPattern(rule, place);
  if (rule.contains("items")) return readArray(rule, place);
  if (rule.contains("columns")) return readColumns(rule, place);
  if (rule.contains("select")) return readSelect(rule, place);
  if (rule.contains("ifHas")) {
    allowOnly(rule, {"ifHas", "then", "else"}, place);
    return std::make_shared<KeyChoiceRule>(
        textPart(rule, "ifHas", place), read(requiredPart(rule, "then", place), place + ".then"),
        read(requiredPart(rule, "else", place), place + ".else"));
  }
  if (rule.contains("fields") || rule.contains("with")) return readObject(rule, place);
  refuseRule(place, "no known kind of rule");
}

RulePointer ContractReader::readNamed(const std::string& name, const std::string& place) {
  if (const auto type = typeFromName(name)) return std::make_shared<TypeRule>(*type);
  if (const auto found = read_.find(name); found != read_.end()) return found->second;
  const Json* definition = findMember(definitions_, name);
  if (definition == nullptr) refuseRule(place, "no definition is called \"" + name + "\"");
  if (!beingRead_.insert(name).second) {
    refuseRule(place, "the definition \"" + name + "\" contains itself");
  }
  RulePointer rule = read(*definition, "definitions." + name);
  beingRead_.erase(name);
  read_.emplace(name, rule);
  return rule;
}

void ContractReader::takeOver(const Json& names, const std::string& place, ObjectShape& shape) {
  if (!names.is_array()) refuseRule(place, "expected an array of names");
  for (const Json& name : names) {
    if (!name.is_string()) refuseRule(place, "expected an array of names");
    const RulePointer rule = readNamed(name.get<std::string>(), place);
    const auto* object = dynamic_cast<const ObjectRule*>(rule.get());
    if (object == nullptr) refuseRule(place, name.get<std::string>() + " has no fields");
    for (const FieldRule& field : object->shape().fields) setField(shape, field);
    append(shape.same, object->shape().same);
    append(shape.sameLength, object->shape().sameLength);
    append(shape.noLonger, object->shape().noLonger);
  }
}

RulePointer ContractReader::readObject(const Json& rule, const std::string& place) {
  allowOnly(rule, {"with", "fields", "open", "orEmpty", "orOnly", "same", "sameLength", "noLonger"},
            place);
  ObjectShape shape;
  shape.open = flagPart(rule, "open", place);
  shape.orEmpty = flagPart(rule, "orEmpty", place);
  if (const Json* names = findMember(rule, "with")) takeOver(*names, place + ".with", shape);
  if (const Json* fields = findMember(rule, "fields")) {
    if (!fields->is_object()) refuseRule(place + ".fields", "expected an object");
    for (const auto& [key, value] : fields->items()) {
      const bool required = key.empty() || key.back() != '?';
      const std::string name = required ? key : key.substr(0, key.size() - 1);
      setField(shape, {name, required, read(value, memberPlace(place + ".fields", key))});
    }
  }
  readOnly(rule, place, shape);
  readComparisons(rule, place, shape);
  return std::make_shared<ObjectRule>(std::move(shape));
}

RulePointer ContractReader::readArray(const Json& rule, const std::string& place) {
  allowOnly(rule, {"items", "atLeast", "atMost"}, place);
  ArrayRule::Bounds bounds;
  bounds.atLeast = countPart(rule, "atLeast", bounds.atLeast, place);
  bounds.atMost = countPart(rule, "atMost", bounds.atMost, place);
  return std::make_shared<ArrayRule>(read(requiredPart(rule, "items", place), place + ".items"),
                                     bounds);
}

std::vector<RulePointer> ContractReader::readRules(const Json& rules, const std::string& place) {
  if (!rules.is_array() || rules.empty()) refuseRule(place, "expected an array of rules");
  std::vector<RulePointer> list;
  for (std::size_t i = 0; i < rules.size(); ++i) {
    list.push_back(read(rules[i], place + "[" + std::to_string(i) + "]"));
  }
  return list;
}

RulePointer ContractReader::readColumns(const Json& rule, const std::string& place) {
  allowOnly(rule, {"columns", "orMore"}, place);
  auto columns = readRules(requiredPart(rule, "columns", place), place + ".columns");
  const std::size_t required = columns.size();
  if (const Json* more = findMember(rule, "orMore")) {
    for (RulePointer& column : readRules(*more, place + ".orMore")) {
      columns.push_back(std::move(column));
    }
  }
  return std::make_shared<ColumnsRule>(std::move(columns), required);
}

RulePointer ContractReader::readSelect(const Json& rule, const std::string& place) {
  allowOnly(rule, {"select", "cases"}, place);
  const Json& cases = requiredPart(rule, "cases", place);
  if (!cases.is_object() || cases.empty()) {
    refuseRule(place + ".cases", "expected an object of rules by word");
  }
  std::vector<std::pair<std::string, RulePointer>> rules;
  for (const auto& [word, value] : cases.items()) {
    rules.emplace_back(word, read(value, memberPlace(place + ".cases", word)));
  }
  return std::make_shared<SelectRule>(textPart(rule, "select", place), std::move(rules));
}

}  // namespace risk_server
