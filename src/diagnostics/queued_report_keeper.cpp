#include "diagnostics/queued_report_keeper.h"

#include <utility>

namespace quorvance {

QueuedReportKeeper::QueuedReportKeeper(std::shared_ptr<ReportStore> store,
                                       std::shared_ptr<BackgroundQueue> backgroundQueue)
    : store_(std::move(store)), backgroundQueue_(std::move(backgroundQueue)) {}

void QueuedReportKeeper::storeReport(Json report, ReportCategory category) {
  if (waiting_->fetch_add(1) >= kMaxWaitingReports) {
    waiting_->fetch_sub(1);
    return;
  }
  auto kept = std::make_shared<const Json>(std::move(report));
  backgroundQueue_->post(WorkLane::files, [store = store_, waiting = waiting_, kept, category] {
    store->storeReport(*kept, category);
    waiting->fetch_sub(1);
  });
}

}  // namespace quorvance
