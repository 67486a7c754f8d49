#include "diagnostics/delivery_ledger.h"

#include <chrono>
#include <string>

namespace quorvance {
namespace {

DeliveryStatus::Time timeFrom(std::int64_t milliseconds) {
  return DeliveryStatus::Time(std::chrono::milliseconds(milliseconds));
}

}  // namespace

void DeliveryLedger::noteSuccess(std::int64_t now) noexcept {
  const std::lock_guard lock(mutex_);
  lastSuccess_ = now;
}

void DeliveryLedger::noteFailure(std::int64_t now, VerdictReason reason,
                                 std::optional<int> httpStatus, std::string_view service) noexcept {
  const std::lock_guard lock(mutex_);
  lastFailure_ = Failure{now, reason, httpStatus, service};
}

void DeliveryLedger::describe(DeliveryStatus& status) const {
  status.reports = {countOf(ReportFate::stored),           countOf(ReportFate::sent),
                    countOf(ReportFate::droppedFull),      countOf(ReportFate::droppedWaiting),
                    countOf(ReportFate::droppedUnwritten), countOf(ReportFate::unreadable)};
  std::optional<std::int64_t> success;
  std::optional<Failure> failure;
  {
    const std::lock_guard lock(mutex_);
    success = lastSuccess_;
    failure = lastFailure_;
  }
  if (success) status.lastSuccess = timeFrom(*success);
  if (failure) {
    status.lastFailure =
        DeliveryStatus::Failure{timeFrom(failure->time), failure->reason, failure->httpStatus,
                                std::string(failure->service)};
  }
}

}  // namespace quorvance
