#pragma once

#include <exception>
#include <optional>
#include <string_view>
#include <utility>

#include "base/forked_child.h"
#include "quorvance/c.h"
#include "quorvance/vocabulary.h"

namespace quorvance {

/// Runs what a function of the C interface does; nothing is thrown out of it.
template <class Operation>
int answerOf(Operation&& operation) noexcept {
  if (isForkedChild()) return QUORVANCE_UNAVAILABLE;
  try {
    return std::forward<Operation>(operation)();
  } catch (const std::exception&) {  // no memory
    return QUORVANCE_UNAVAILABLE;
  }
}

/// The value of a word as the server knows it; absent for null and for an unknown word, where the
/// vocabulary itself has a fallback.
template <class Value>
std::optional<Value> valueOfWord(const char* word) {
  if (word == nullptr) return std::nullopt;
  for (const Value value : VocabularyEnumerator<Value>::array()) {
    if (VocabularyToString<Value>::toString(value) == word) return value;
  }
  return std::nullopt;
}

}  // namespace quorvance
