#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <memory>

#include "base/json.h"
#include "diagnostics/delivery_ledger.h"
#include "diagnostics/error_log_data.h"
#include "diagnostics/report_store.h"
#include "quorvance/platform/queues.h"
#include "state/system_texts.h"

namespace quorvance {

/// How many reports of a category may wait for the disk; when it does not answer, further ones are
/// dropped.
inline constexpr std::size_t kMaxWaitingReports = 100;

/// Hands reports to the store on the file lane and returns without waiting for it; of one thread's
/// reports, in order. Any thread; what it could not keep it tells in debug mode alone.
class ReportKeeper {
 public:
  ReportKeeper(std::shared_ptr<ReportStore> store, std::shared_ptr<BackgroundQueue> backgroundQueue,
               std::shared_ptr<SystemTexts> texts, std::shared_ptr<DeliveryLedger> ledger);

  void storeReport(Json report, ReportCategory category);
  /// The record gets the system's version there if it has none. `cause` is the work that it follows
  /// from, if any is pending.
  void storeReport(ErrorLogData record, ReportCategory category,
                   const PendingWork::Mark& cause = {});

 private:
  template <class MakeReport>
  void post(MakeReport makeReport, ReportCategory category, const PendingWork::Mark& cause);

  const std::shared_ptr<ReportStore> store_;
  const std::shared_ptr<BackgroundQueue> backgroundQueue_;
  const std::shared_ptr<SystemTexts> texts_;
  const std::shared_ptr<DeliveryLedger> ledger_;
  using Counts = std::array<std::atomic<std::size_t>, kReportCategoryWords.size()>;
  const std::shared_ptr<Counts> waiting_ = std::make_shared<Counts>();
};

}  // namespace quorvance
