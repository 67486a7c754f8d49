#pragma once

// The only doors between JSON text and JSON values, and readers that test the exact type: `get<>`
// narrows in silence, and a const `[]` on a missing key is undefined.

#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>

#include "quorvance/json_conversion.h"

namespace quorvance {

/// Text with more values, all of them counted, objects and arrays too, is not read: small values
/// take many times the room of their text. A reply of the server has ten, a large configuration
/// thousands.
inline constexpr std::size_t kMaxJsonValues = 65'536;

/// Whether writing or copying the value would recurse beyond kMaxJsonDepth.
bool isNestedTooDeep(const Json& value);

/// Whether the writer takes the value, `depth` values around it; needs no memory.
bool canBeWritten(const Json& value, std::size_t depth = 0);

/// A value that the writer refuses: what cannot be copied into a body makes the body one that
/// cannot be JSON.
Json unwritableJson();

/// Compact text. Text that is not UTF-8 is replaced (U+FFFD). Absent for a value that cannot be
/// JSON: it holds a NaN or an infinity, or is nested deeper than kMaxJsonDepth.
std::optional<std::string> writeJson(const Json& value);

/// As above, indented by two spaces.
std::optional<std::string> writeJsonIndented(const Json& value);

/// The text form of a value in traces and debug lines: compact, "nil" for what cannot be JSON.
std::string textOf(const Json& value);

/// A text in a debug line shows no more of its bytes.
inline constexpr std::size_t kMaxDebugTextBytes = 4096;

/// As above for debug lines: of longer texts only the front stands, with their length.
std::string debugTextOf(const Json& value);

/// Absent for text that is no JSON, holds more than one value or a NUL, or exceeds the two bounds
/// above. Of members with one key the last value stands, in the place of the first.
std::optional<Json> parseJson(std::string_view text);

/// Takes the value apart, innermost parts first, and leaves null. The JSON library's own destructor
/// wants memory for that and ends the process where there is none, so what may hold much goes this
/// way. Needs none.
void discardJson(Json& value) noexcept;

/// Discards the value at the end of a scope, be it left by an exception. A function that builds a
/// value keeps it at last, to return it.
class JsonDiscarder {
 public:
  explicit JsonDiscarder(Json& value) : value_(&value) {}
  /// What it holds at the end.
  explicit JsonDiscarder(std::optional<Json>& value) : optional_(&value) {}
  ~JsonDiscarder() {
    if (value_ != nullptr) discardJson(*value_);
    if (optional_ != nullptr && *optional_) discardJson(**optional_);
  }
  void keep() { value_ = nullptr; }
  JsonDiscarder(const JsonDiscarder&) = delete;
  JsonDiscarder& operator=(const JsonDiscarder&) = delete;

 private:
  Json* value_ = nullptr;
  std::optional<Json>* const optional_ = nullptr;
};

/// A JSON object with room for `members`: growing an object that holds others copies them all.
Json makeObject(std::size_t members);

/// Makes room for further members without copying those that are there. Without memory the object
/// is spoilt.
void reserveMembers(Json& object, std::size_t further);

/// Appends a member whose key is new: nothing is looked up.
void putMember(Json& object, std::string_view key, Json value);
/// Overwrites the member of that key in its place, or appends one.
void setMember(Json& object, std::string_view key, Json value);

/// The member, or null when `object` is no object or has no such key.
const Json* findMember(const Json& object, std::string_view key);

// Null or absent for a missing key and for a value of another type. An integer written with a
// fraction or an exponent is a double; one that does not fit 64 bits signed is no integer.
const std::string* findText(const Json& object, std::string_view key);
std::optional<std::int64_t> findInteger(const Json& object, std::string_view key);
std::optional<double> findNumber(const Json& object, std::string_view key);
std::optional<bool> findBool(const Json& object, std::string_view key);
const Json* findObject(const Json& object, std::string_view key);
const Json* findArray(const Json& object, std::string_view key);

// The same for a value at hand.
std::optional<std::int64_t> integerOf(const Json& value);
std::optional<double> numberOf(const Json& value);

}  // namespace quorvance
