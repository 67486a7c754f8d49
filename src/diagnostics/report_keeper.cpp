#include "diagnostics/report_keeper.h"

#include <string>
#include <utility>

#include "base/debug.h"
#include "base/out_of_memory.h"

namespace quorvance {

ReportKeeper::ReportKeeper(std::shared_ptr<ReportStore> store,
                           std::shared_ptr<BackgroundQueue> backgroundQueue,
                           std::shared_ptr<SystemTexts> texts,
                           std::shared_ptr<DeliveryLedger> ledger)
    : store_(std::move(store)),
      backgroundQueue_(std::move(backgroundQueue)),
      texts_(std::move(texts)),
      ledger_(std::move(ledger)) {}

namespace {

/// A report that waits for the disk.
struct KeptJson {
  explicit KeptJson(Json value) : report(std::move(value)) {}
  ~KeptJson() { discardJson(report); }
  KeptJson(const KeptJson&) = delete;
  KeptJson& operator=(const KeptJson&) = delete;

  Json report;
};

}  // namespace

// The place among those that wait is given back with the task, be it lost.
template <class MakeReport>
void ReportKeeper::post(MakeReport makeReport, ReportCategory category,
                        const PendingWork::Mark& cause) {
  std::atomic<std::size_t>& count = (*waiting_)[static_cast<std::size_t>(category)];
  const bool isFull = count.fetch_add(1) >= kMaxWaitingReports;
  const std::shared_ptr<void> place(
      nullptr, [waiting = waiting_, &count](std::nullptr_t) { count.fetch_sub(1); });
  if (isFull) {
    ledger_->note(ReportFate::droppedWaiting);
    debugPrint("a report is dropped, too many wait for the disk: " +
               std::string(categoryWord(category)));
    return;
  }
  const PendingWork::Mark pending = cause ? cause : ledger_->pending()->begin();
  backgroundQueue_->post(WorkLane::files,
                         withinMemory([store = store_, place, pending, makeReport, category] {
                           Json report = makeReport();
                           const JsonDiscarder discarder(report);
                           store->storeReport(report, category);
                         }));
}

void ReportKeeper::storeReport(Json report, ReportCategory category) {
  const JsonDiscarder discarder(report);
  auto kept = std::make_shared<KeptJson>(std::move(report));
  post([kept] { return std::move(kept->report); }, category, {});
}

void ReportKeeper::storeReport(ErrorLogData record, ReportCategory category,
                               const PendingWork::Mark& cause) {
  auto kept = std::make_shared<const ErrorLogData>(std::move(record));
  post([kept, texts = texts_] { return kept->completeJson(*texts); }, category, cause);
}

}  // namespace quorvance
