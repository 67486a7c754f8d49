// refused: the codec is of another type than the member

#include "test/refused_code/two_records.h"

namespace quorvance {

constexpr auto kField = field<&One::text>("text", kIntegerCodec);

}  // namespace quorvance
