// refused: members of this type have no codec

#include "test/refused_code/two_records.h"

namespace quorvance {

struct Odd {
  std::optional<int> number{};
};

constexpr auto kField = field<&Odd::number>("number");

}  // namespace quorvance
