#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>

#include "base/json.h"

namespace quorvance {

/// The value of a text that must be JSON.
inline Json parsedJson(std::string_view text) {
  auto value = parseJson(text);
  if (!value) ADD_FAILURE() << "no JSON: " << text;
  return value.value_or(Json());
}

/// An empty object inside of others: as many levels.
inline Json nestedObjects(std::size_t levels) {
  Json value = Json::object();
  for (std::size_t i = 1; i < levels; ++i) {
    Json outer = makeObject(1);
    putMember(outer, "a", std::move(value));
    value = std::move(outer);
  }
  return value;
}

/// The compact text of a value that must be writable: compares order, numbers and spelling at once.
/// Its bytes are those of the JSON library, whatever is written.
inline std::string compactText(const Json& value) {
  const auto text = writeJson(value);
  if (!text) ADD_FAILURE() << "a value that cannot be JSON";
  EXPECT_EQ(text.value_or(""), value.dump(-1, ' ', false, Json::error_handler_t::replace));
  return text.value_or("");
}

/// A key that holds an integer takes no fraction; one that holds a fraction takes any number.
inline bool isOfKindOf(const Json& value, const Json& sample) {
  if (sample.is_number_float()) return value.is_number();
  if (sample.is_number_integer()) return value.is_number_integer();
  return value.type() == sample.type();
}

/// Puts values of other kinds under each key of `sample`, one at a time, and expects what
/// `textOfRead` (the text of what was read from an object) gives for an empty object.
template <class TextOfRead>
void expectOtherKindsIgnored(const Json& sample, TextOfRead textOfRead) {
  const std::string untouched = textOfRead(Json::object());
  const Json values =
      parsedJson(R"([null,true,false,0,1,-7,5.0,0.5,"","5","true",[],["a"],[{}],{},{"city":"x"}])");
  for (const auto& member : sample.items()) {
    for (const Json& value : values) {
      if (isOfKindOf(value, member.value())) continue;
      Json object = Json::object();
      object[member.key()] = value;
      EXPECT_EQ(textOfRead(object), untouched) << compactText(object);
    }
  }
}

/// As above for a record that reads itself back: `text` holds all of its keys in their order.
template <class Rewrite>
void expectRecordText(std::string_view text, Rewrite rewrite) {
  EXPECT_EQ(rewrite(parsedJson(text)), text);
  expectOtherKindsIgnored(parsedJson(text), rewrite);
}

}  // namespace quorvance
