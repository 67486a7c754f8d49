#pragma once

// How members of a record are written to JSON and read from it, one codec for a type of member. The
// codecs know their types; below them types are forgotten.

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "base/json.h"
#include "quorvance/vocabulary.h"

namespace quorvance {

struct ErasedCodec {
  void (*write)(Json& object, std::string_view key, const void* member);
  void (*read)(const Json& value, void* member);
};

/// How one type of member is written and read. `write` adds nothing for an absent member unless the
/// codec says otherwise; `read` ignores a value of another type.
template <class Type>
struct FieldCodec {
  ErasedCodec erased;
};

template <class Type, void (*Write)(Json&, std::string_view, const Type&)>
void writeMember(Json& object, std::string_view key, const void* member) {
  Write(object, key, *static_cast<const Type*>(member));
}

template <class Type, void (*Read)(const Json&, Type&)>
void readMember(const Json& value, void* member) {
  Read(value, *static_cast<Type*>(member));
}

/// The codec of two functions that know the type.
template <class Type, void (*Write)(Json& object, std::string_view key, const Type& member),
          void (*Read)(const Json& value, Type& member)>
constexpr FieldCodec<Type> codecOf() {
  return {{&writeMember<Type, Write>, &readMember<Type, Read>}};
}

extern const FieldCodec<std::optional<std::string>> kTextCodec;
extern const FieldCodec<std::optional<std::int64_t>> kIntegerCodec;
/// Left out unless finite.
extern const FieldCodec<std::optional<double>> kNumberCodec;
/// Its own shortest digits; left out unless finite.
extern const FieldCodec<std::optional<float>> kSingleCodec;
extern const FieldCodec<std::optional<bool>> kBoolCodec;
extern const FieldCodec<std::string> kRequiredTextCodec;
extern const FieldCodec<std::int64_t> kRequiredIntegerCodec;
extern const FieldCodec<std::optional<std::vector<std::string>>> kTextListCodec;

void writeTextMember(Json& object, std::string_view key, std::string text);
const std::string* textIn(const Json& value);
void writeEmptyObject(Json& object, std::string_view key);

/// std::optional<Value> as its word; an unknown word is read as the vocabulary's fallback.
template <class Value>
struct VocabularyField {
  static void write(Json& object, std::string_view key, const std::optional<Value>& value) {
    if (value) writeTextMember(object, key, VocabularyToString<Value>::toString(*value));
  }
  static void read(const Json& value, std::optional<Value>& member) {
    const std::string* word = textIn(value);
    if (word != nullptr) member = VocabularyToString<Value>::fromString(*word);
  }
  static constexpr auto kCodec = codecOf<std::optional<Value>, &write, &read>();
};

/// A value that is always there.
template <class Value>
struct RequiredVocabularyField {
  static void write(Json& object, std::string_view key, const Value& value) {
    writeTextMember(object, key, VocabularyToString<Value>::toString(value));
  }
  static void read(const Json& value, Value& member) {
    const std::string* word = textIn(value);
    if (word != nullptr) member = VocabularyToString<Value>::fromString(*word);
  }
  static constexpr auto kCodec = codecOf<Value, &write, &read>();
};

/// As the optional one; an absent value is written as the word of `Neutral`.
template <class Value, Value Neutral>
struct NeutralVocabularyField {
  static void write(Json& object, std::string_view key, const std::optional<Value>& value) {
    writeTextMember(object, key, VocabularyToString<Value>::toString(value.value_or(Neutral)));
  }
  static constexpr auto kCodec =
      codecOf<std::optional<Value>, &write, &VocabularyField<Value>::read>();
};

/// std::shared_ptr<const Record>, left out when absent.
template <class Record>
struct NestedRecordField {
  static void write(Json& object, std::string_view key,
                    const std::shared_ptr<const Record>& record) {
    if (record) putMember(object, key, record->getJson());
  }
  static void read(const Json& value, std::shared_ptr<const Record>& member) {
    if (value.is_object()) member = std::make_shared<const Record>(Record::fromJson(value));
  }
  static constexpr auto kCodec = codecOf<std::shared_ptr<const Record>, &write, &read>();
};

/// As above; an absent record is written as an empty object.
template <class Record>
struct RecordOrEmptyField {
  static void write(Json& object, std::string_view key,
                    const std::shared_ptr<const Record>& record) {
    record ? putMember(object, key, record->getJson()) : writeEmptyObject(object, key);
  }
  static constexpr auto kCodec =
      codecOf<std::shared_ptr<const Record>, &write, &NestedRecordField<Record>::read>();
};

/// The codec of a member that names none.
template <class Type>
struct DefaultCodec {
  static_assert(sizeof(Type) == 0, "members of this type have no codec");
  static constexpr FieldCodec<Type> kCodec{};
};
template <>
struct DefaultCodec<std::optional<std::string>> {
  static constexpr const auto& kCodec = kTextCodec;
};
template <>
struct DefaultCodec<std::optional<std::int64_t>> {
  static constexpr const auto& kCodec = kIntegerCodec;
};
template <>
struct DefaultCodec<std::optional<double>> {
  static constexpr const auto& kCodec = kNumberCodec;
};
template <>
struct DefaultCodec<std::optional<float>> {
  static constexpr const auto& kCodec = kSingleCodec;
};
template <>
struct DefaultCodec<std::optional<bool>> {
  static constexpr const auto& kCodec = kBoolCodec;
};
template <>
struct DefaultCodec<std::string> {
  static constexpr const auto& kCodec = kRequiredTextCodec;
};
template <>
struct DefaultCodec<std::int64_t> {
  static constexpr const auto& kCodec = kRequiredIntegerCodec;
};
template <>
struct DefaultCodec<std::optional<std::vector<std::string>>> {
  static constexpr const auto& kCodec = kTextListCodec;
};
template <class Value>
requires std::is_enum_v<Value>
struct DefaultCodec<Value> {
  static constexpr const auto& kCodec = RequiredVocabularyField<Value>::kCodec;
};
template <class Value>
requires std::is_enum_v<Value>
struct DefaultCodec<std::optional<Value>> {
  static constexpr const auto& kCodec = VocabularyField<Value>::kCodec;
};
template <class Record>
struct DefaultCodec<std::shared_ptr<const Record>> {
  static constexpr const auto& kCodec = NestedRecordField<Record>::kCodec;
};

}  // namespace quorvance
