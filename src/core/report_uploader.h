#pragma once

#include <array>
#include <memory>
#include <mutex>
#include <optional>

#include "diagnostics/report_store.h"
#include "network/quorvance_network_manager.h"
#include "quorvance/platform/queues.h"

namespace quorvance {

/// Sends stored reports, file after file in the folder's order, and removes each that was taken.
/// Any thread, guarded by one mutex; the disk is touched on the file lane alone.
///
/// A category's life: idle, until an ask begins a run. A run lists the files once and tries each,
/// whatever became of the one before, be it lost for want of memory. Asks made meanwhile become one
/// further run, under the identity of the earliest of them, so runs of one category never overlap.
/// A run that another process has under way is left to that one. It ends when nobody holds it; one
/// that was never started has tried nothing. Pending is the file that it is at, until what the
/// server took is removed; those that follow are stored.
class ReportUploader : public std::enable_shared_from_this<ReportUploader> {
 public:
  ReportUploader(std::shared_ptr<ReportStore> store,
                 std::shared_ptr<BackgroundQueue> backgroundQueue,
                 std::shared_ptr<DeliveryLedger> ledger);

  struct Run;
  using SharedRun = std::shared_ptr<Run>;

  /// Takes note of the ask, which wakes no thread. The reports go out under the identity and the
  /// session of `caller`, each with a request identifier of its own. Null when a run is under way,
  /// which another one will follow then; otherwise the run, for start().
  SharedRun ask(ReportCategory category, std::shared_ptr<QuorvanceNetworkManager> client,
                Caller caller);
  /// Returns at once; null does nothing.
  void start(const SharedRun& run) noexcept;

 private:
  struct Ask {
    ReportCategory category;
    std::shared_ptr<QuorvanceNetworkManager> client;
    Caller caller;
  };
  struct Category {
    bool isRunning = false;
    std::optional<Ask> waiting;
  };

  Category& categoryOf(ReportCategory category);
  SharedRun makeRun(Ask ask) noexcept;
  void goOn(const SharedRun& run);
  void tryNext(const SharedRun& run);
  void send(const SharedRun& run, const std::string& name, const ReplyHandler& handler);
  void end(ReportCategory category) noexcept;

  const std::shared_ptr<ReportStore> store_;
  const std::shared_ptr<BackgroundQueue> backgroundQueue_;
  const std::shared_ptr<DeliveryLedger> ledger_;
  std::mutex mutex_;
  std::array<Category, kReportCategoryWords.size()> categories_;
};

}  // namespace quorvance
