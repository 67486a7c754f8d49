// What is right compiles: the faults beside it are refused for their own reasons.

#include "test/refused_code/two_records.h"

namespace quorvance {

struct MoreThanOne : One {};

constexpr auto kOwnCodec = RecordTable{field<&One::number>("number", kIntegerCodec)};

Json written(const MoreThanOne& record) { return recordToJson(record, kOneFields); }

One read(const Json& json) {
  One record = recordFromJson(json, kOneFields);
  readRecord(json, record, kOwnCodec);
  return record;
}

}  // namespace quorvance
