#pragma once

// The one mechanism behind every record: a constexpr table of fields {key, member, codec}, in the
// order in which the keys are written, that serves both directions. Only fetching a member is a
// template; what touches JSON is a handful of ordinary functions in record.cpp.

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/json.h"
#include "quorvance/vocabulary.h"

namespace quorvance {

/// How one type of member is written and read. `write` adds nothing for an absent member unless the
/// codec says otherwise; `read` ignores a value of another type.
struct FieldCodec {
  void (*write)(Json& object, std::string_view key, const void* member);
  void (*read)(const Json& value, void* member);
};

struct RecordField {
  std::string_view key;
  const FieldCodec* codec;
  const void* (*member)(const void* record);
  void* (*mutableMember)(void* record);
};

Json recordToJson(const void* record, std::span<const RecordField> fields);
void recordFromJson(const Json& json, void* record, std::span<const RecordField> fields);

extern const FieldCodec kTextCodec;             // std::optional<std::string>
extern const FieldCodec kIntegerCodec;          // std::optional<std::int64_t>
extern const FieldCodec kNumberCodec;           // std::optional<double>, left out unless finite
extern const FieldCodec kSingleCodec;           // std::optional<float>, its own shortest digits
extern const FieldCodec kBoolCodec;             // std::optional<bool>
extern const FieldCodec kRequiredTextCodec;     // std::string
extern const FieldCodec kRequiredIntegerCodec;  // std::int64_t
extern const FieldCodec kTextListCodec;         // std::optional<std::vector<std::string>>

void writeTextMember(Json& object, std::string_view key, std::string text);
const std::string* textIn(const Json& value);
void writeEmptyObject(Json& object, std::string_view key);

/// std::optional<Value> as its word; an unknown word is read as the vocabulary's fallback.
template <class Value>
struct VocabularyField {
  static void write(Json& object, std::string_view key, const void* member) {
    const auto& value = *static_cast<const std::optional<Value>*>(member);
    if (value) writeTextMember(object, key, VocabularyToString<Value>::toString(*value));
  }
  static void read(const Json& value, void* member) {
    const std::string* word = textIn(value);
    if (word == nullptr) return;
    *static_cast<std::optional<Value>*>(member) = VocabularyToString<Value>::fromString(*word);
  }
  static constexpr FieldCodec kCodec{&write, &read};
};

/// A value that is always there.
template <class Value>
struct RequiredVocabularyField {
  static void write(Json& object, std::string_view key, const void* member) {
    const Value value = *static_cast<const Value*>(member);
    writeTextMember(object, key, VocabularyToString<Value>::toString(value));
  }
  static void read(const Json& value, void* member) {
    const std::string* word = textIn(value);
    if (word == nullptr) return;
    *static_cast<Value*>(member) = VocabularyToString<Value>::fromString(*word);
  }
  static constexpr FieldCodec kCodec{&write, &read};
};

/// As the optional one; an absent value is written as the word of `Neutral`.
template <class Value, Value Neutral>
struct NeutralVocabularyField {
  static void write(Json& object, std::string_view key, const void* member) {
    const auto& value = *static_cast<const std::optional<Value>*>(member);
    writeTextMember(object, key, VocabularyToString<Value>::toString(value.value_or(Neutral)));
  }
  static constexpr FieldCodec kCodec{&write, &VocabularyField<Value>::read};
};

/// std::shared_ptr<const Record>, left out when absent.
template <class Record>
struct NestedRecordField {
  static void write(Json& object, std::string_view key, const void* member) {
    const auto& record = *static_cast<const std::shared_ptr<const Record>*>(member);
    if (record) putMember(object, key, record->getJson());
  }
  static void read(const Json& value, void* member) {
    if (!value.is_object()) return;
    *static_cast<std::shared_ptr<const Record>*>(member) =
        std::make_shared<const Record>(Record::fromJson(value));
  }
  static constexpr FieldCodec kCodec{&write, &read};
};

/// As above; an absent record is written as an empty object.
template <class Record>
struct RecordOrEmptyField {
  static void write(Json& object, std::string_view key, const void* member) {
    const auto& record = *static_cast<const std::shared_ptr<const Record>*>(member);
    record ? putMember(object, key, record->getJson()) : writeEmptyObject(object, key);
  }
  static constexpr FieldCodec kCodec{&write, &NestedRecordField<Record>::read};
};

template <class Type>
struct DefaultCodec;
template <>
struct DefaultCodec<std::optional<std::string>> {
  static constexpr const FieldCodec& kCodec = kTextCodec;
};
template <>
struct DefaultCodec<std::optional<std::int64_t>> {
  static constexpr const FieldCodec& kCodec = kIntegerCodec;
};
template <>
struct DefaultCodec<std::optional<double>> {
  static constexpr const FieldCodec& kCodec = kNumberCodec;
};
template <>
struct DefaultCodec<std::optional<float>> {
  static constexpr const FieldCodec& kCodec = kSingleCodec;
};
template <>
struct DefaultCodec<std::optional<bool>> {
  static constexpr const FieldCodec& kCodec = kBoolCodec;
};
template <>
struct DefaultCodec<std::string> {
  static constexpr const FieldCodec& kCodec = kRequiredTextCodec;
};
template <>
struct DefaultCodec<std::int64_t> {
  static constexpr const FieldCodec& kCodec = kRequiredIntegerCodec;
};
template <>
struct DefaultCodec<std::optional<std::vector<std::string>>> {
  static constexpr const FieldCodec& kCodec = kTextListCodec;
};
template <class Value>
requires std::is_enum_v<Value>
struct DefaultCodec<Value> {
  static constexpr const FieldCodec& kCodec = RequiredVocabularyField<Value>::kCodec;
};
template <class Value>
requires std::is_enum_v<Value>
struct DefaultCodec<std::optional<Value>> {
  static constexpr const FieldCodec& kCodec = VocabularyField<Value>::kCodec;
};
template <class Record>
struct DefaultCodec<std::shared_ptr<const Record>> {
  static constexpr const FieldCodec& kCodec = NestedRecordField<Record>::kCodec;
};

template <auto Member>
struct MemberOf;
template <class Record, class Type, Type Record::*Member>
struct MemberOf<Member> {
  using Value = Type;
  static const void* get(const void* record) {
    return &(static_cast<const Record*>(record)->*Member);
  }
  static void* getMutable(void* record) { return &(static_cast<Record*>(record)->*Member); }
};

/// A field with the codec of its member's type.
template <auto Member>
constexpr RecordField field(std::string_view key) {
  using Access = MemberOf<Member>;
  return {key, &DefaultCodec<typename Access::Value>::kCodec, &Access::get, &Access::getMutable};
}

/// A field with a codec of its own.
template <auto Member>
constexpr RecordField field(std::string_view key, const FieldCodec& codec) {
  return {key, &codec, &MemberOf<Member>::get, &MemberOf<Member>::getMutable};
}

}  // namespace quorvance
