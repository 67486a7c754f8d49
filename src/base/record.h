#pragma once

// The one mechanism behind every record: a constexpr table of fields {key, member, codec}, in the
// order in which the keys are written, that serves both directions.
//
// A thin typed layer makes sure that a table meets its own record and a codec its own type of
// member. Below it types are forgotten: what touches JSON is a handful of ordinary functions in
// record.cpp.

#include <concepts>
#include <cstddef>
#include <span>
#include <string_view>

#include "base/field_codec.h"
#include "base/json_exchange.h"

namespace quorvance {

// --- without types -------------------------------------------------------------------------------

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
