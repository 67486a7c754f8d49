#include "base/json.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace quorvance {
namespace {

// Of a value that fits the depth.
bool holdsWritable(const Json& value) {
  if (value.is_number_float()) return std::isfinite(*value.get_ptr<const Json::number_float_t*>());
  if (!value.is_structured()) return !value.is_discarded() && !value.is_binary();
  return std::all_of(value.begin(), value.end(), holdsWritable);
}

// Copies a value that fits the depth without copying the texts that are cut.
Json withShortTexts(const Json& value) {
  if (const auto* text = value.get_ptr<const std::string*>()) {
    if (text->size() <= kMaxDebugTextBytes) return value;
    return text->substr(0, kMaxDebugTextBytes) + "... (" + std::to_string(text->size()) + " bytes)";
  }
  if (!value.is_structured()) return value;
  Json copy = value.is_array() ? Json::array() : makeObject(value.size());
  for (const auto& member : value.items()) {
    Json shortened = withShortTexts(member.value());
    value.is_array() ? copy.push_back(std::move(shortened))
                     : putMember(copy, member.key(), std::move(shortened));
  }
  return copy;
}

}  // namespace

bool isNestedTooDeep(const Json& value) { return !fitsJsonDepth(value); }

bool canBeWritten(const Json& value, std::size_t depth) {
  return fitsJsonDepth(value, depth) && holdsWritable(value);
}

Json unwritableJson() { return notJson(); }

std::string textOf(const Json& value) { return writeJson(value).value_or("nil"); }

std::string debugTextOf(const Json& value) {
  return isNestedTooDeep(value) ? "nil" : textOf(withShortTexts(value));
}

void discardJson(Json& value) noexcept {
  discardJsonParts(value);
  value = nullptr;
}

Json makeObject(std::size_t members) {
  Json object = Json::object();
  object.get_ref<Json::object_t&>().reserve(members);
  return object;
}

void putMember(Json& object, std::string_view key, Json value) {
  const JsonDiscarder discarder(value);
  object.get_ref<Json::object_t&>().emplace_back(std::string(key), std::move(value));
}

void setMember(Json& object, std::string_view key, Json value) {
  const JsonDiscarder discarder(value);
  auto& members = object.get_ref<Json::object_t&>();
  const auto found = std::find_if(members.begin(), members.end(),
                                  [&](const auto& member) { return member.first == key; });
  if (found == members.end()) {
    putMember(object, key, std::move(value));
  } else {
    found->second.swap(value);
  }
}

void reserveMembers(Json& object, std::size_t further) {
  auto& members = object.get_ref<Json::object_t&>();
  if (members.capacity() - members.size() >= further) return;
  Json::object_t grown;
  grown.reserve(members.size() + further);
  for (auto& [key, value] : members) grown.emplace_back(key, std::move(value));
  members.swap(grown);
}

const Json* findMember(const Json& object, std::string_view key) {
  if (!object.is_object()) return nullptr;
  const auto& members = object.get_ref<const Json::object_t&>();
  const auto found = std::find_if(members.begin(), members.end(),
                                  [&](const auto& member) { return member.first == key; });
  return found == members.end() ? nullptr : &found->second;
}

const std::string* findText(const Json& object, std::string_view key) {
  const Json* member = findMember(object, key);
  return member == nullptr ? nullptr : member->get_ptr<const std::string*>();
}

std::optional<std::int64_t> integerOf(const Json& value) {
  if (value.is_number_unsigned()) {
    const auto number = *value.get_ptr<const Json::number_unsigned_t*>();
    if (number > std::uint64_t{std::numeric_limits<std::int64_t>::max()}) return std::nullopt;
    return static_cast<std::int64_t>(number);
  }
  if (!value.is_number_integer()) return std::nullopt;
  return *value.get_ptr<const Json::number_integer_t*>();
}

std::optional<double> numberOf(const Json& value) {
  if (!value.is_number()) return std::nullopt;
  return value.get<double>();
}

std::optional<std::int64_t> findInteger(const Json& object, std::string_view key) {
  const Json* member = findMember(object, key);
  return member == nullptr ? std::nullopt : integerOf(*member);
}

std::optional<double> findNumber(const Json& object, std::string_view key) {
  const Json* member = findMember(object, key);
  return member == nullptr ? std::nullopt : numberOf(*member);
}

std::optional<bool> findBool(const Json& object, std::string_view key) {
  const Json* member = findMember(object, key);
  if (member == nullptr || !member->is_boolean()) return std::nullopt;
  return *member->get_ptr<const bool*>();
}

const Json* findObject(const Json& object, std::string_view key) {
  const Json* member = findMember(object, key);
  return member != nullptr && member->is_object() ? member : nullptr;
}

const Json* findArray(const Json& object, std::string_view key) {
  const Json* member = findMember(object, key);
  return member != nullptr && member->is_array() ? member : nullptr;
}

}  // namespace quorvance
