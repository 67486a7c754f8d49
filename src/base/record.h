#pragma once

// The one mechanism behind every record: a constexpr table of fields {key, member, codec}, in the
// order in which the keys are written, that serves both directions.
//
// A thin typed layer makes sure that a table meets its own record and a codec its own type of
// member. Below it types are forgotten: what touches JSON is a handful of ordinary functions in
// record.cpp.

#include <concepts>
#include <cstddef>
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

// --- without types -------------------------------------------------------------------------------

struct ErasedCodec {
  void (*write)(Json& object, std::string_view key, const void* member);
  void (*read)(const Json& value, void* member);
};

struct ErasedField {
  std::string_view key;
  const ErasedCodec* codec;
  const void* (*member)(const void* record);
  void* (*mutableMember)(void* record);
};

// The record is of the type whose fields these are: only the typed layer calls these.
Json erasedToJson(const void* record, std::span<const ErasedField> fields);
void writeErased(Json& object, const void* record, std::span<const ErasedField> fields);
void readErased(const Json& json, void* record, std::span<const ErasedField> fields);

// --- with types ----------------------------------------------------------------------------------

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

template <class Record>
struct RecordField {
  ErasedField erased;

  constexpr operator ErasedField() const { return erased; }
};

/// The fields of one record: constexpr auto kFields = RecordTable{field<&User::email>("email")}.
/// An aggregate behind `auto`: g++ 12 puts any other constexpr table into writable memory.
template <class Record, std::size_t Size>
struct RecordTable {
  ErasedField fields[Size];

  static constexpr std::size_t size() { return Size; }
};

template <class RecordType, class... Fields>
struct OneRecord {
  static_assert((std::same_as<Fields, RecordField<RecordType>> && ...),
                "the fields are of two records");
  using Record = RecordType;
};
template <class Record, class... Fields>
RecordTable(RecordField<Record>, Fields...)
    -> RecordTable<typename OneRecord<Record, Fields...>::Record, 1 + sizeof...(Fields)>;

/// Adds the members of the record to an object that has room for them.
template <class Given, class Record, std::size_t Size>
void writeRecord(Json& object, const Given& record, const RecordTable<Record, Size>& table) {
  static_assert(std::derived_from<Given, Record>, "the table is of another record");
  writeErased(object, static_cast<const Record*>(&record), table.fields);
}

template <class Given, class Record, std::size_t Size>
Json recordToJson(const Given& record, const RecordTable<Record, Size>& table) {
  static_assert(std::derived_from<Given, Record>, "the table is of another record");
  return erasedToJson(static_cast<const Record*>(&record), table.fields);
}

/// Takes what the JSON has; the other members stay.
template <class Given, class Record, std::size_t Size>
void readRecord(const Json& json, Given& record, const RecordTable<Record, Size>& table) {
  static_assert(std::derived_from<Given, Record>, "the table is of another record");
  readErased(json, static_cast<Record*>(&record), table.fields);
}

template <class Record, std::size_t Size>
Record recordFromJson(const Json& json, const RecordTable<Record, Size>& table) {
  Record record;
  readRecord(json, record, table);
  return record;
}

// --- codecs --------------------------------------------------------------------------------------

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

template <auto Member>
struct MemberOf;
template <class RecordType, class Type, Type RecordType::*Member>
struct MemberOf<Member> {
  using Record = RecordType;
  using Value = Type;
  static const void* get(const void* record) {
    return &(static_cast<const Record*>(record)->*Member);
  }
  static void* getMutable(void* record) { return &(static_cast<Record*>(record)->*Member); }
};

/// A field with a codec of its own.
template <auto Member, class Type>
constexpr auto field(std::string_view key, const FieldCodec<Type>& codec) {
  using Access = MemberOf<Member>;
  static_assert(std::same_as<Type, typename Access::Value>,
                "the codec is of another type than the member");
  return RecordField<typename Access::Record>{
      {key, &codec.erased, &Access::get, &Access::getMutable}};
}

/// A field with the codec of its member's type.
template <auto Member>
constexpr auto field(std::string_view key) {
  return field<Member>(key, DefaultCodec<typename MemberOf<Member>::Value>::kCodec);
}

}  // namespace quorvance
