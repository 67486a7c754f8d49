#pragma once

// The converter family: every integer-valued vocabulary has a ...ToString class and a
// ...Enumerator class, each an alias of one of the templates below. All members may be called from
// any thread; the classes hold no state.

#include "quorvance/standard_library.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#pragma GCC visibility push(default)

namespace quorvance {

/// Between a vocabulary's values and the words that the server knows.
template <class Value>
class VocabularyToString {
 public:
  /// A value outside the vocabulary is a programming error and stops the process.
  static std::string toString(Value type);
  /// Exact comparison, case included. An unknown word gives the vocabulary's fixed fallback, which
  /// is one of its ordinary values: the caller cannot tell the two apart, by contract.
  static Value fromString(std::string_view string);
};

/// For the two vocabularies that can also say "no such word".
template <class Value>
class NillableVocabularyToString : public VocabularyToString<Value> {
 public:
  /// Absent for an unknown word.
  static std::optional<Value> fromNillableString(std::string_view string);
};

/// A vocabulary as a list, as a menu, and from raw numbers.
template <class Value>
class VocabularyEnumerator {
 public:
  /// Every value, in raw order.
  static std::vector<Value> array();
  /// From each value's word to its raw number.
  static std::map<std::string, std::int64_t> dictionary();
  /// Absent for a number outside the vocabulary.
  static std::optional<Value> fromRawValue(std::int64_t rawValue);
};

}  // namespace quorvance

#pragma GCC visibility pop
