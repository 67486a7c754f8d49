// refused: the table is of another record

#include "test/refused_code/two_records.h"

namespace quorvance {

void read(const Json& json, Other& record) { readRecord(json, record, kOneFields); }

}  // namespace quorvance
