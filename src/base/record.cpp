#include "base/record.h"

#include <array>
#include <charconv>
#include <cmath>
#include <utility>

namespace quorvance {
namespace {

template <class Type>
void writeOptional(Json& object, std::string_view key, const void* member) {
  const auto& value = *static_cast<const std::optional<Type>*>(member);
  if (value) putMember(object, key, *value);
}

template <class Type>
void writeRequired(Json& object, std::string_view key, const void* member) {
  putMember(object, key, *static_cast<const Type*>(member));
}

void readOptionalText(const Json& value, void* member) {
  if (const std::string* text = textIn(value)) {
    *static_cast<std::optional<std::string>*>(member) = *text;
  }
}

void readOptionalInteger(const Json& value, void* member) {
  if (const auto number = integerOf(value)) {
    *static_cast<std::optional<std::int64_t>*>(member) = number;
  }
}

// One fact that is no number must not cost the whole body.
void writeOptionalNumber(Json& object, std::string_view key, const void* member) {
  const auto& value = *static_cast<const std::optional<double>*>(member);
  if (value && std::isfinite(*value)) putMember(object, key, *value);
}

void readOptionalNumber(const Json& value, void* member) {
  if (const auto number = numberOf(value)) {
    *static_cast<std::optional<double>*>(member) = number;
  }
}

// 0.1f goes out as 0.1, not as the double nearest to the float.
void writeOptionalSingle(Json& object, std::string_view key, const void* member) {
  const auto& value = *static_cast<const std::optional<float>*>(member);
  if (!value || !std::isfinite(*value)) return;
  std::array<char, 64> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), *value).ptr;
  double number = static_cast<double>(*value);
  std::from_chars(digits.data(), end, number);
  putMember(object, key, number);
}

void readOptionalSingle(const Json& value, void* member) {
  if (const auto number = numberOf(value)) {
    *static_cast<std::optional<float>*>(member) = static_cast<float>(*number);
  }
}

void readOptionalBool(const Json& value, void* member) {
  if (value.is_boolean()) {
    *static_cast<std::optional<bool>*>(member) = *value.get_ptr<const bool*>();
  }
}

void readRequiredText(const Json& value, void* member) {
  if (const std::string* text = textIn(value)) *static_cast<std::string*>(member) = *text;
}

void readRequiredInteger(const Json& value, void* member) {
  if (const auto number = integerOf(value)) *static_cast<std::int64_t*>(member) = *number;
}

void writeTextList(Json& object, std::string_view key, const void* member) {
  const auto& list = *static_cast<const std::optional<std::vector<std::string>>*>(member);
  if (!list) return;
  Json array = Json::array();
  array.get_ref<Json::array_t&>().reserve(list->size());
  for (const std::string& text : *list) array.push_back(text);
  putMember(object, key, std::move(array));
}

void readTextList(const Json& value, void* member) {
  if (!value.is_array()) return;
  auto& list = static_cast<std::optional<std::vector<std::string>>*>(member)->emplace();
  for (const Json& item : value) {
    if (const std::string* text = textIn(item)) list.push_back(*text);
  }
}

}  // namespace

const FieldCodec kTextCodec{&writeOptional<std::string>, &readOptionalText};
const FieldCodec kIntegerCodec{&writeOptional<std::int64_t>, &readOptionalInteger};
const FieldCodec kNumberCodec{&writeOptionalNumber, &readOptionalNumber};
const FieldCodec kSingleCodec{&writeOptionalSingle, &readOptionalSingle};
const FieldCodec kBoolCodec{&writeOptional<bool>, &readOptionalBool};
const FieldCodec kRequiredTextCodec{&writeRequired<std::string>, &readRequiredText};
const FieldCodec kRequiredIntegerCodec{&writeRequired<std::int64_t>, &readRequiredInteger};
const FieldCodec kTextListCodec{&writeTextList, &readTextList};

void writeTextMember(Json& object, std::string_view key, std::string text) {
  putMember(object, key, std::move(text));
}

const std::string* textIn(const Json& value) { return value.get_ptr<const std::string*>(); }

void writeEmptyObject(Json& object, std::string_view key) {
  putMember(object, key, Json::object());
}

Json recordToJson(const void* record, std::span<const RecordField> fields) {
  Json object = makeObject(fields.size());
  for (const RecordField& entry : fields) {
    entry.codec->write(object, entry.key, entry.member(record));
  }
  return object;
}

void recordFromJson(const Json& json, void* record, std::span<const RecordField> fields) {
  for (const RecordField& entry : fields) {
    if (const Json* value = findMember(json, entry.key)) {
      entry.codec->read(*value, entry.mutableMember(record));
    }
  }
}

}  // namespace quorvance
