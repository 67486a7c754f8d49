#pragma once

// How JSON values pass between a host and the library when each has a JSON library of its own, be
// it of another version: as a walk over the value. Where both types are the same, the value itself
// is taken. A host needs none of this by name; quorvance/json_conversion.h has its side of it.
// The `readJson` and `writeJson` of records are what their `fromJson` and `getJson` are made of.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "quorvance/json.h"

#pragma GCC visibility push(default)

namespace quorvance {

/// Deeper values are neither written nor read: writing and copying recurse.
inline constexpr std::size_t kMaxJsonDepth = 128;

/// Tells one type of JSON values from another in one process.
struct JsonType {
  /// As std::type_info has it; empty without run-time type information, and then of no other type.
  const char* name;
  /// 1000000 * major + 1000 * minor + patch of the JSON library.
  std::uint32_t version;
  /// In bytes.
  std::uint32_t size;

  bool isSameAs(const JsonType& other) const noexcept {
    return this == &other || (version == other.version && size == other.size && *name != '\0' &&
                              std::strcmp(name, other.name) == 0);
  }
};

/// Receives a value part by part: one of the parts, or a `begin`, its members or elements and an
/// `end`. Each member is announced by its key.
class JsonSink {
 public:
  virtual ~JsonSink();
  /// Where the value is wanted, as an object of its type, if that is the type that is asked for;
  /// else null. To be assigned instead of telling parts, so only asked for before the first one.
  virtual void* valueOfType(const JsonType& type) noexcept = 0;
  virtual void addNull() = 0;
  /// What is no JSON: it cannot be sent.
  virtual void addNoJson() = 0;
  virtual void addBool(bool value) = 0;
  virtual void addInteger(std::int64_t value) = 0;
  virtual void addUnsigned(std::uint64_t value) = 0;
  virtual void addNumber(double value) = 0;
  virtual void addText(std::string_view value) = 0;
  virtual void beginArray() = 0;
  virtual void beginObject() = 0;
  /// Of the next value, in an object.
  virtual void addKey(std::string_view key) = 0;
  /// Of the object or array that was begun last.
  virtual void end() = 0;
};

/// A value of any JSON type, borrowed for a call.
struct JsonSource {
  const JsonType* type;
  const void* value;
  /// The same value where the receiver may take it and leave another one; else null.
  void* movable;
  /// Tells the value. Throws what the sink throws.
  void (*tell)(const void* value, JsonSink& sink);
};

}  // namespace quorvance

#pragma GCC visibility pop
