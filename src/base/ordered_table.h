#pragma once

#include <algorithm>
#include <cstddef>

namespace quorvance {

/// For a static_assert beside a table that is read by position: each row stands where the key that
/// it names says, and `last`, the last key, has the last row.
template <auto Key, class Rows, class KeyType>
constexpr bool isOrderedBy(const Rows& rows, KeyType last) {
  if (rows.size() != static_cast<std::size_t>(last) + 1) return false;
  return std::all_of(rows.begin(), rows.end(), [&](const auto& row) {
    return static_cast<std::ptrdiff_t>(row.*Key) == &row - rows.data();
  });
}

}  // namespace quorvance
