// refused: the table is of another record

#include "test/refused_code/two_records.h"

namespace quorvance {

Json written(const Other& record) { return recordToJson(record, kOneFields); }

}  // namespace quorvance
