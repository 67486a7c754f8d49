#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>

#include "base/json.h"
#include "base/text.h"

// The JSON library decodes every text character by character. Here what needs no escape is copied
// as it stands; the bytes are the library's, to which everything out of the ordinary is left.

namespace quorvance {
namespace {

constexpr int kCompact = -1;
constexpr int kIndent = 2;
// Of a checkpoint's body.
constexpr std::size_t kUsualBytes = 4096;

constexpr std::size_t kByteValues = 256;
constexpr char kPlain = '\0';
constexpr char kAsCodePoint = 'u';

/// What follows the backslash in the stead of a byte.
constexpr std::array<char, kByteValues> makeEscapes() {
  std::array<char, kByteValues> escapes{};
  for (std::size_t control = 0; control < 0x20; ++control) escapes[control] = kAsCodePoint;
  escapes['\b'] = 'b';
  escapes['\t'] = 't';
  escapes['\n'] = 'n';
  escapes['\f'] = 'f';
  escapes['\r'] = 'r';
  escapes['"'] = '"';
  escapes['\\'] = '\\';
  return escapes;
}
constexpr auto kEscapes = makeEscapes();

/// Writes one value compactly, as long as it can be JSON and its texts are UTF-8.
class JsonWriter {
 public:
  enum class Outcome { written, notUtf8, noJson };

  JsonWriter() { text_.reserve(kUsualBytes); }

  /// `depth` values stand around this one.
  Outcome write(const Json& value, std::size_t depth);
  std::string takeText() { return std::move(text_); }

 private:
  Outcome writeObject(const Json::object_t& object, std::size_t depth);
  Outcome writeArray(const Json::array_t& array, std::size_t depth);
  Outcome writeNumber(const Json& value);
  Outcome writeText(const std::string& text);
  void writeEscaped(unsigned char byte);
  template <class Integer>
  Outcome writeInteger(Integer number);
  Outcome add(std::string_view word) {
    text_ += word;
    return Outcome::written;
  }

  std::string text_;
};

JsonWriter::Outcome JsonWriter::write(const Json& value, std::size_t depth) {
  if (value.is_structured() && depth >= kMaxJsonDepth) return Outcome::noJson;
  switch (value.type()) {
    case Json::value_t::object:
      return writeObject(*value.get_ptr<const Json::object_t*>(), depth + 1);
    case Json::value_t::array:
      return writeArray(*value.get_ptr<const Json::array_t*>(), depth + 1);
    case Json::value_t::string:
      return writeText(*value.get_ptr<const std::string*>());
    case Json::value_t::boolean:
      return add(*value.get_ptr<const bool*>() ? "true" : "false");
    case Json::value_t::null:
      return add("null");
    case Json::value_t::number_integer:
    case Json::value_t::number_unsigned:
    case Json::value_t::number_float:
      return writeNumber(value);
    case Json::value_t::binary:
    case Json::value_t::discarded:
      break;
  }
  return Outcome::noJson;
}

JsonWriter::Outcome JsonWriter::writeObject(const Json::object_t& object, std::size_t depth) {
  text_ += '{';
  bool isFirst = true;
  for (const auto& [key, value] : object) {
    if (!std::exchange(isFirst, false)) text_ += ',';
    Outcome outcome = writeText(key);
    text_ += ':';
    if (outcome == Outcome::written) outcome = write(value, depth);
    if (outcome != Outcome::written) return outcome;
  }
  return add("}");
}

JsonWriter::Outcome JsonWriter::writeArray(const Json::array_t& array, std::size_t depth) {
  text_ += '[';
  bool isFirst = true;
  for (const Json& value : array) {
    if (!std::exchange(isFirst, false)) text_ += ',';
    const Outcome outcome = write(value, depth);
    if (outcome != Outcome::written) return outcome;
  }
  return add("]");
}

JsonWriter::Outcome JsonWriter::writeNumber(const Json& value) {
  if (value.is_number_unsigned()) {
    return writeInteger(*value.get_ptr<const Json::number_unsigned_t*>());
  }
  if (value.is_number_integer()) {
    return writeInteger(*value.get_ptr<const Json::number_integer_t*>());
  }
  // Its digits are the library's own, not always the shortest.
  const double number = *value.get_ptr<const Json::number_float_t*>();
  return std::isfinite(number) ? add(value.dump()) : Outcome::noJson;
}

template <class Integer>
JsonWriter::Outcome JsonWriter::writeInteger(Integer number) {
  std::array<char, std::numeric_limits<Integer>::digits10 + 2> digits;
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
  return add({digits.data(), end});
}

JsonWriter::Outcome JsonWriter::writeText(const std::string& text) {
  text_ += '"';
  std::size_t written = 0;
  unsigned char all = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    all |= byte;
    if (kEscapes[byte] == kPlain) continue;
    text_.append(text, written, i - written);
    writeEscaped(byte);
    written = i + 1;
  }
  text_.append(text, written);
  text_ += '"';
  return all < 0x80 || isUtf8(text) ? Outcome::written : Outcome::notUtf8;
}

void JsonWriter::writeEscaped(unsigned char byte) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  text_ += '\\';
  text_ += kEscapes[byte];
  if (kEscapes[byte] != kAsCodePoint) return;
  text_ += "00";
  text_ += kDigits[byte >> 4];
  text_ += kDigits[byte & 0x0F];
}

std::optional<std::string> dumpJson(const Json& value, int indent) {
  if (!canBeWritten(value)) return std::nullopt;
  return value.dump(indent, ' ', false, Json::error_handler_t::replace);
}

}  // namespace

std::optional<std::string> writeJson(const Json& value) {
  JsonWriter writer;
  switch (writer.write(value, 0)) {
    case JsonWriter::Outcome::written:
      return writer.takeText();
    case JsonWriter::Outcome::notUtf8:
      return dumpJson(value, kCompact);
    case JsonWriter::Outcome::noJson:
      break;
  }
  return std::nullopt;
}

std::optional<std::string> writeJsonIndented(const Json& value) { return dumpJson(value, kIndent); }

}  // namespace quorvance
