#pragma once

// The one mechanism behind every vocabulary. A vocabulary is a specialisation of VocabularyTable
// with `kWords` (by raw order), `kLast` (the last value) and, where it differs, `kFirstRaw`,
// `kFallback` and `kMenuWords`; its source file then instantiates the converter classes.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string_view>

#include "base/fatal.h"
#include "quorvance/vocabulary.h"

namespace quorvance {

template <class Value>
struct VocabularyTable;

template <std::size_t Size>
constexpr bool areDistinctWords(const std::array<std::string_view, Size>& words) {
  for (std::size_t i = 0; i < Size; ++i) {
    if (words[i].empty()) return false;
    for (std::size_t j = 0; j < i; ++j) {
      if (words[i] == words[j]) return false;
    }
  }
  return true;
}

template <class Value>
constexpr std::int64_t firstRawOf() {
  if constexpr (requires { VocabularyTable<Value>::kFirstRaw; }) {
    return VocabularyTable<Value>::kFirstRaw;
  } else {
    return 0;
  }
}

/// Whether there is a word for each value, and a word for the menu where there are such.
template <class Value>
constexpr bool hasAllWords() {
  using Table = VocabularyTable<Value>;
  constexpr std::int64_t kCount = static_cast<std::int64_t>(Table::kLast) - firstRawOf<Value>() + 1;
  if constexpr (requires { Table::kMenuWords; }) {
    if (std::ssize(Table::kMenuWords) != kCount) return false;
  }
  return std::ssize(Table::kWords) == kCount;
}

/// The word of a value; a value outside the vocabulary is a programming error.
template <class Value>
std::string_view wordOf(Value value) {
  constexpr auto& words = VocabularyTable<Value>::kWords;
  static_assert(areDistinctWords(words) && hasAllWords<Value>());
  constexpr std::int64_t kFirst = firstRawOf<Value>();
  const auto raw = static_cast<std::int64_t>(value);
  if (raw < kFirst || raw >= kFirst + std::ssize(words)) {
    fatalError("a value outside its vocabulary");
  }
  return words[static_cast<std::size_t>(raw - kFirst)];
}

/// Exact comparison in raw order; absent for an unknown word.
template <class Value>
std::optional<Value> valueOf(std::string_view word) {
  constexpr auto& words = VocabularyTable<Value>::kWords;
  const auto found = std::find(words.begin(), words.end(), word);
  if (found == words.end()) return std::nullopt;
  return static_cast<Value>(firstRawOf<Value>() + (found - words.begin()));
}

template <class Value>
std::string VocabularyToString<Value>::toString(Value type) {
  return std::string(wordOf(type));
}

template <class Value>
Value VocabularyToString<Value>::fromString(std::string_view string) {
  return valueOf<Value>(string).value_or(VocabularyTable<Value>::kFallback);
}

template <class Value>
std::optional<Value> NillableVocabularyToString<Value>::fromNillableString(
    std::string_view string) {
  return valueOf<Value>(string);
}

template <class Value>
std::vector<Value> VocabularyEnumerator<Value>::array() {
  std::vector<Value> values;
  for (std::size_t i = 0; i < VocabularyTable<Value>::kWords.size(); ++i) {
    values.push_back(static_cast<Value>(firstRawOf<Value>() + static_cast<std::int64_t>(i)));
  }
  return values;
}

template <class Value>
std::map<std::string, std::int64_t> VocabularyEnumerator<Value>::dictionary() {
  std::map<std::string, std::int64_t> words;
  for (const Value value : array()) {
    const auto raw = static_cast<std::int64_t>(value);
    if constexpr (requires { VocabularyTable<Value>::kMenuWords; }) {
      const auto index = static_cast<std::size_t>(raw - firstRawOf<Value>());
      words.emplace(VocabularyTable<Value>::kMenuWords[index], raw);
    } else {
      words.emplace(wordOf(value), raw);
    }
  }
  return words;
}

template <class Value>
std::optional<Value> VocabularyEnumerator<Value>::fromRawValue(std::int64_t rawValue) {
  const auto size = static_cast<std::int64_t>(VocabularyTable<Value>::kWords.size());
  if (rawValue < firstRawOf<Value>() || rawValue >= firstRawOf<Value>() + size) {
    return std::nullopt;
  }
  return static_cast<Value>(rawValue);
}

}  // namespace quorvance
