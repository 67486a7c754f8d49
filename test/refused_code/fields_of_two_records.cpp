// refused: the fields are of two records

#include "test/refused_code/two_records.h"

namespace quorvance {

constexpr auto kFields = RecordTable{field<&One::text>("text"), field<&Other::text>("other")};

}  // namespace quorvance
