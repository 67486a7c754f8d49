#pragma once

// Makes JSON values of what json_exchange.h tells, and takes them apart without memory.

#include <cstddef>
#include <cstdint>
#include <exception>
#include <string>
#include <string_view>
#include <typeinfo>
#include <utility>
#include <vector>

#include "quorvance/json_exchange.h"

namespace quorvance {

template <class Value>
const JsonType& jsonType() {
#ifdef __cpp_rtti
  constexpr auto name = [] { return typeid(Value).name(); };
#else
  constexpr auto name = [] { return ""; };
#endif
  static const JsonType type{name(),
                             1'000'000 * NLOHMANN_JSON_VERSION_MAJOR +
                                 1000 * NLOHMANN_JSON_VERSION_MINOR + NLOHMANN_JSON_VERSION_PATCH,
                             sizeof(Value)};
  return type;
}

/// Takes the parts of a value apart, innermost first, and needs no memory for it. The JSON
/// library's own destructor does, and ends the process where there is none. What lies deeper than
/// kMaxJsonDepth is left to it: this recurses.
template <class Value>
void discardJsonParts(Value& value, std::size_t depth = 0) noexcept {
  if (depth == kMaxJsonDepth) return;
  if (auto* const object = value.template get_ptr<typename Value::object_t*>()) {
    for (auto& [key, member] : *object) discardJsonParts(member, depth + 1);
    object->clear();
  } else if (auto* const array = value.template get_ptr<typename Value::array_t*>()) {
    for (Value& element : *array) discardJsonParts(element, depth + 1);
    array->clear();
  }
}

/// Discards the parts of a value at the end of a scope, be it left by an exception.
template <class Value>
class JsonRemains {
 public:
  explicit JsonRemains(Value& value) : value_(value) {}
  ~JsonRemains() { discardJsonParts(value_); }
  JsonRemains(const JsonRemains&) = delete;
  JsonRemains& operator=(const JsonRemains&) = delete;

 private:
  Value& value_;
};

/// Makes a value of what is told; it must outlive the builder. Null until then, and discarded where
/// an exception ends the telling.
template <class Value>
class JsonBuilder final : public JsonSink {
 public:
  explicit JsonBuilder(Value& value) : value_(value) {}
  ~JsonBuilder() override {
    if (std::uncaught_exceptions() > exceptions_) discardJsonParts(value_);
  }

  void* valueOfType(const JsonType& type) noexcept override {
    return type.isSameAs(jsonType<Value>()) ? &value_ : nullptr;
  }
  void addNull() override { place() = nullptr; }
  void addNoJson() override { place() = Value(Value::value_t::discarded); }
  void addBool(bool value) override { place() = value; }
  void addInteger(std::int64_t value) override { place() = value; }
  void addUnsigned(std::uint64_t value) override { place() = value; }
  void addNumber(double value) override { place() = value; }
  void addText(std::string_view value) override { place() = std::string(value); }
  void beginArray() override { open(Value::array()); }
  void beginObject() override { open(Value::object()); }
  void addKey(std::string_view key) override { key_ = key; }
  void end() override {
    // Tells the children, where the JSON library has them know it, who their parent is.
    Value whole = std::move(*open_.back());
    *open_.back() = std::move(whole);
    open_.pop_back();
  }

 private:
  Value& place() {
    if (open_.empty()) return value_;
    Value& parent = *open_.back();
    if (parent.is_array()) {
      parent.push_back(nullptr);
      return parent.back();
    }
    auto& members = parent.template get_ref<typename Value::object_t&>();
    if constexpr (requires { members.reserve(1); }) {
      if (members.size() == members.capacity()) growMembers(members);
      members.emplace_back(key_, nullptr);  // told as they stood: no key is looked for
      return members.back().second;
    } else {
      return members[key_];
    }
  }
  // Moves the values: left to itself the JSON library's list of members copies them.
  template <class Members>
  static void growMembers(Members& members) {
    Members grown;
    grown.reserve(2 * members.size() + 4);
    for (auto& [key, value] : members) grown.emplace_back(key, std::move(value));
    members.swap(grown);
  }
  void open(Value empty) {
    Value& opened = place();
    opened = std::move(empty);
    open_.push_back(&opened);
  }

  const int exceptions_ = std::uncaught_exceptions();
  Value& value_;
  /// The objects and arrays that are being told, outermost first.
  std::vector<Value*> open_;
  std::string key_;
};

}  // namespace quorvance
