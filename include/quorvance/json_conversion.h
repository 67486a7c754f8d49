#pragma once

// A host's side of json_exchange.h, for whichever type of JSON values it has.

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <limits>
#include <type_traits>
#include <utility>

#include "quorvance/json_builder.h"
#include "quorvance/json_exchange.h"

namespace quorvance {

/// A number that cannot be sent.
inline double notJson() { return std::numeric_limits<double>::quiet_NaN(); }

/// Whether writing or copying the value stays within kMaxJsonDepth, `depth` values around it.
template <class Value>
bool fitsJsonDepth(const Value& value, std::size_t depth = 0) {
  if (!value.is_structured()) return true;
  if (depth >= kMaxJsonDepth) return false;
  return std::all_of(value.begin(), value.end(),
                     [&](const Value& child) { return fitsJsonDepth(child, depth + 1); });
}

/// Tells the parts of a value. One that is no JSON, or lies deeper than kMaxJsonDepth, is told as
/// one that cannot be sent.
template <class Value>
void tellJson(const Value& value, JsonSink& sink, std::size_t depth = 0) {
  using Type = typename Value::value_t;
  if (value.is_structured() && depth >= kMaxJsonDepth) return sink.addNoJson();
  switch (value.type()) {
    case Type::null:
      return sink.addNull();
    case Type::boolean:
      return sink.addBool(value.template get_ref<const typename Value::boolean_t&>());
    case Type::number_integer:
      return sink.addInteger(value.template get_ref<const typename Value::number_integer_t&>());
    case Type::number_unsigned:
      return sink.addUnsigned(value.template get_ref<const typename Value::number_unsigned_t&>());
    case Type::number_float:
      return sink.addNumber(value.template get_ref<const typename Value::number_float_t&>());
    case Type::string:
      return sink.addText(value.template get_ref<const typename Value::string_t&>());
    case Type::array:
      sink.beginArray();
      for (const Value& element : value.template get_ref<const typename Value::array_t&>()) {
        tellJson(element, sink, depth + 1);
      }
      return sink.end();
    case Type::object:
      sink.beginObject();
      for (const auto& [key, member] : value.template get_ref<const typename Value::object_t&>()) {
        sink.addKey(key);
        tellJson(member, sink, depth + 1);
      }
      return sink.end();
    case Type::binary:
    case Type::discarded:
      return sink.addNoJson();
  }
}

/// Gives the value away to whoever asked for it.
template <class Value>
requires(!std::is_reference_v<Value>) void giveJson(JsonSink& sink, Value&& value) {
  if (void* const wanted = sink.valueOfType(jsonType<Value>())) {
    *static_cast<Value*>(wanted) = std::forward<Value>(value);
  } else {
    const JsonRemains remains(value);
    tellJson(value, sink);
  }
}

/// The value that `write` gives to a sink.
template <class Value, std::invocable<JsonSink&> Write>
Value writtenJson(const Write& write) {
  Value value;
  JsonBuilder<Value> builder(value);
  write(builder);
  return value;
}

/// A lent value for reading: itself, or a copy of one of another type. Valid as long as both.
template <class Value>
class JsonReader {
 public:
  explicit JsonReader(const JsonSource& source) {
    if (source.type->isSameAs(jsonType<Value>())) {
      value_ = static_cast<const Value*>(source.value);
    } else {
      JsonBuilder<Value> builder(copy_);
      source.tell(source.value, builder);
    }
  }
  ~JsonReader() { discardJsonParts(copy_); }
  JsonReader(const JsonReader&) = delete;
  JsonReader& operator=(const JsonReader&) = delete;

  const Value& operator*() const { return *value_; }

 private:
  Value copy_;
  const Value* value_ = &copy_;
};

/// Lends a value, for reading.
template <class Value>
JsonSource jsonSource(const Value& value) {
  return {&jsonType<Value>(), &value, nullptr, [](const void* told, JsonSink& sink) {
            tellJson(*static_cast<const Value*>(told), sink);
          }};
}

/// Lends a value that may be taken.
template <class Value>
JsonSource movableJsonSource(Value& value) {
  JsonSource source = jsonSource<Value>(value);
  source.movable = &value;
  return source;
}

}  // namespace quorvance
