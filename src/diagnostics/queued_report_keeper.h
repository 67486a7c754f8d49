#pragma once

#include <atomic>
#include <cstddef>
#include <memory>

#include "diagnostics/report_keeper.h"
#include "diagnostics/report_store.h"
#include "quorvance/platform/queues.h"

namespace quorvance {

/// How many reports may wait for the disk; when it does not answer, further ones are dropped.
inline constexpr std::size_t kMaxWaitingReports = 200;

/// Hands reports to the store on the file lane, which keeps their order. Any thread.
class QueuedReportKeeper : public ReportKeeper {
 public:
  QueuedReportKeeper(std::shared_ptr<ReportStore> store,
                     std::shared_ptr<BackgroundQueue> backgroundQueue,
                     std::shared_ptr<SystemTexts> texts);
  void storeReport(Json report, ReportCategory category) override;
  void storeReport(ErrorLogData record, ReportCategory category) override;

 private:
  template <class MakeReport>
  void post(MakeReport makeReport, ReportCategory category);

  const std::shared_ptr<ReportStore> store_;
  const std::shared_ptr<BackgroundQueue> backgroundQueue_;
  const std::shared_ptr<SystemTexts> texts_;
  const std::shared_ptr<std::atomic<std::size_t>> waiting_ =
      std::make_shared<std::atomic<std::size_t>>(0);
};

}  // namespace quorvance
