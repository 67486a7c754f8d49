#include "diagnostics/report_keeper.h"

#include <utility>

namespace quorvance {

ReportKeeper::ReportKeeper(std::shared_ptr<ReportStore> store,
                           std::shared_ptr<BackgroundQueue> backgroundQueue,
                           std::shared_ptr<SystemTexts> texts)
    : store_(std::move(store)),
      backgroundQueue_(std::move(backgroundQueue)),
      texts_(std::move(texts)) {}

template <class MakeReport>
void ReportKeeper::post(MakeReport makeReport, ReportCategory category) {
  if (waiting_->fetch_add(1) >= kMaxWaitingReports) {
    waiting_->fetch_sub(1);
    return;
  }
  backgroundQueue_->post(WorkLane::files,
                         [store = store_, waiting = waiting_, makeReport, category] {
                           store->storeReport(makeReport(), category);
                           waiting->fetch_sub(1);
                         });
}

void ReportKeeper::storeReport(Json report, ReportCategory category) {
  auto kept = std::make_shared<const Json>(std::move(report));
  post([kept]() -> const Json& { return *kept; }, category);
}

void ReportKeeper::storeReport(ErrorLogData record, ReportCategory category) {
  auto kept = std::make_shared<const ErrorLogData>(std::move(record));
  post([kept, texts = texts_] { return kept->completeJson(*texts); }, category);
}

}  // namespace quorvance
