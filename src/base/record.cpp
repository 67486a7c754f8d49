#include "base/record.h"

#include <array>
#include <charconv>
#include <cmath>
#include <utility>

namespace quorvance {
namespace {

template <class Type>
void writeOptional(Json& object, std::string_view key, const std::optional<Type>& value) {
  if (value) putMember(object, key, *value);
}

template <class Type>
void writeRequired(Json& object, std::string_view key, const Type& value) {
  putMember(object, key, value);
}

void readOptionalText(const Json& value, std::optional<std::string>& member) {
  if (const std::string* text = textIn(value)) member = *text;
}

void readOptionalInteger(const Json& value, std::optional<std::int64_t>& member) {
  if (const auto number = integerOf(value)) member = number;
}

// One fact that is no number must not cost the whole body.
void writeOptionalNumber(Json& object, std::string_view key, const std::optional<double>& value) {
  if (value && std::isfinite(*value)) putMember(object, key, *value);
}

void readOptionalNumber(const Json& value, std::optional<double>& member) {
  if (const auto number = numberOf(value)) member = number;
}

// 0.1f goes out as 0.1, not as the double nearest to the float.
void writeOptionalSingle(Json& object, std::string_view key, const std::optional<float>& value) {
  if (!value || !std::isfinite(*value)) return;
  std::array<char, 64> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), *value).ptr;
  double number = static_cast<double>(*value);
  std::from_chars(digits.data(), end, number);
  putMember(object, key, number);
}

void readOptionalSingle(const Json& value, std::optional<float>& member) {
  if (const auto number = numberOf(value)) member = static_cast<float>(*number);
}

void readOptionalBool(const Json& value, std::optional<bool>& member) {
  if (value.is_boolean()) member = *value.get_ptr<const bool*>();
}

void readRequiredText(const Json& value, std::string& member) {
  if (const std::string* text = textIn(value)) member = *text;
}

void readRequiredInteger(const Json& value, std::int64_t& member) {
  if (const auto number = integerOf(value)) member = *number;
}

using TextList = std::optional<std::vector<std::string>>;

void writeTextList(Json& object, std::string_view key, const TextList& list) {
  if (!list) return;
  Json array = Json::array();
  array.get_ref<Json::array_t&>().reserve(list->size());
  for (const std::string& text : *list) array.push_back(text);
  putMember(object, key, std::move(array));
}

void readTextList(const Json& value, TextList& member) {
  if (!value.is_array()) return;
  auto& list = member.emplace();
  for (const Json& item : value) {
    if (const std::string* text = textIn(item)) list.push_back(*text);
  }
}

}  // namespace

constinit const FieldCodec<std::optional<std::string>> kTextCodec =
    codecOf<std::optional<std::string>, &writeOptional, &readOptionalText>();
constinit const FieldCodec<std::optional<std::int64_t>> kIntegerCodec =
    codecOf<std::optional<std::int64_t>, &writeOptional, &readOptionalInteger>();
constinit const FieldCodec<std::optional<double>> kNumberCodec =
    codecOf<std::optional<double>, &writeOptionalNumber, &readOptionalNumber>();
constinit const FieldCodec<std::optional<float>> kSingleCodec =
    codecOf<std::optional<float>, &writeOptionalSingle, &readOptionalSingle>();
constinit const FieldCodec<std::optional<bool>> kBoolCodec =
    codecOf<std::optional<bool>, &writeOptional, &readOptionalBool>();
constinit const FieldCodec<std::string> kRequiredTextCodec =
    codecOf<std::string, &writeRequired, &readRequiredText>();
constinit const FieldCodec<std::int64_t> kRequiredIntegerCodec =
    codecOf<std::int64_t, &writeRequired, &readRequiredInteger>();
constinit const FieldCodec<TextList> kTextListCodec =
    codecOf<TextList, &writeTextList, &readTextList>();

void writeTextMember(Json& object, std::string_view key, std::string text) {
  putMember(object, key, std::move(text));
}

const std::string* textIn(const Json& value) { return value.get_ptr<const std::string*>(); }

void writeEmptyObject(Json& object, std::string_view key) {
  putMember(object, key, Json::object());
}

Json erasedToJson(const void* record, std::span<const ErasedField> fields) {
  Json object = makeObject(fields.size());
  JsonDiscarder discarder(object);
  writeErased(object, record, fields);
  discarder.keep();
  return object;
}

void writeErased(Json& object, const void* record, std::span<const ErasedField> fields) {
  for (const ErasedField& entry : fields) {
    entry.codec->write(object, entry.key, entry.member(record));
  }
}

void readErased(const Json& json, void* record, std::span<const ErasedField> fields) {
  for (const ErasedField& entry : fields) {
    if (const Json* value = findMember(json, entry.key)) {
      entry.codec->read(*value, entry.mutableMember(record));
    }
  }
}

}  // namespace quorvance
