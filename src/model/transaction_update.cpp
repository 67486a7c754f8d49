#include "model/transaction_update.h"

#include "base/record.h"

namespace quorvance {
namespace {

constexpr auto kUpdateFields = RecordTable{
    field<&TransactionUpdate::requestID>("requestID"),
    field<&TransactionUpdate::transactionID>("transactionID"),
    field<&TransactionUpdate::status>("status"),
};

}  // namespace

Json TransactionUpdate::getJson() const { return recordToJson(*this, kUpdateFields); }

}  // namespace quorvance
