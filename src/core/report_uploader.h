#pragma once

#include <array>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "diagnostics/report_store.h"
#include "network/quorvance_network_manager.h"
#include "quorvance/platform/queues.h"

namespace quorvance {

/// Sends stored reports, file after file in the folder's order, and removes each that was taken.
/// Any thread, guarded by one mutex; the disk is touched on the file lane alone.
///
/// A category's life: idle, until an ask begins a run. A run lists the files once and tries each,
/// whatever became of the one before. Asks made meanwhile become one further run, under the
/// identity of the earliest of them, so runs of one category never overlap. A run that another
/// process has under way is left to that one.
class ReportUploader : public std::enable_shared_from_this<ReportUploader> {
 public:
  ReportUploader(std::shared_ptr<ReportStore> store,
                 std::shared_ptr<BackgroundQueue> backgroundQueue);

  /// Returns at once. `identity` is a call as it stood when the upload was asked for: the reports
  /// go out under its user, device and session, each with a request identifier of its own.
  void uploadStoredReports(ReportCategory category, std::shared_ptr<QuorvanceNetworkManager> client,
                           PreparedCall identity);

 private:
  struct Ask {
    ReportCategory category;
    std::shared_ptr<QuorvanceNetworkManager> client;
    PreparedCall identity;
  };
  struct Run {
    Ask ask;
    std::vector<std::string> names;
    std::size_t next = 0;
    std::unique_ptr<DocumentsLock> lock;
  };
  struct Category {
    bool isRunning = false;
    std::optional<Ask> waiting;
  };

  Category& categoryOf(const Ask& ask);
  void begin(Ask ask);
  void tryNext(const std::shared_ptr<Run>& run);
  void send(const std::shared_ptr<Run>& run, const std::string& name, Json report);
  void finish(const std::shared_ptr<Run>& run, const std::string& name, bool wasTaken);
  void end(Run& run);

  const std::shared_ptr<ReportStore> store_;
  const std::shared_ptr<BackgroundQueue> backgroundQueue_;
  std::mutex mutex_;
  std::array<Category, kReportCategoryWords.size()> categories_;
};

}  // namespace quorvance
