#pragma once

#include "base/record.h"

namespace quorvance {

struct One {
  std::optional<std::string> text{};
  std::optional<std::int64_t> number{};
};

struct Other {
  std::optional<std::string> text{};
};

constexpr auto kOneFields = RecordTable{field<&One::text>("text"), field<&One::number>("number")};

}  // namespace quorvance
