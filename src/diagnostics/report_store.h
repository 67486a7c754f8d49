#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/bounded_mutex.h"
#include "base/json.h"
#include "diagnostics/delivery_ledger.h"
#include "diagnostics/exception_logger.h"
#include "diagnostics/report_category.h"
#include "quorvance/platform/documents.h"

namespace quorvance {

/// At most this many reports of a category are kept; the newest are the ones that are dropped.
inline constexpr std::size_t kMaxReportsPerCategory = 50;
/// Files that could not be read are kept for whoever wants to know why; the newest of them.
inline constexpr std::size_t kMaxUnreadableFiles = 10;
inline constexpr std::string_view kUnreadablePrefix = "unreadable-";

/// The reports on disk: one whole file each, named by category, UUID and ".json" without a
/// separator. Every call waits for the disk, so it belongs on the file lane. Any thread.
///
/// Reports are counted and stored in turns, so that two cannot both be the fiftieth: one thread of
/// one process at a time. A turn is waited for one second at most, and not again while the same
/// process has the folder; then the report is stored without one, for it matters more than the
/// limit. The first use takes up what dead processes were about to store.
///
/// Its own failures are silent towards the caller; where the platform gives an error, the exception
/// logger gets it, except for a write that failed. While collection is off it is as without a
/// folder.
class ReportStore {
 public:
  ReportStore(std::shared_ptr<DocumentsFolder> documents,
              std::shared_ptr<ExceptionLogger> exceptions, std::shared_ptr<DeliveryLedger> ledger);

  /// True when the report was kept. Dropped without a folder, in a full category, and when it
  /// cannot be JSON or is longer than kMaxDocumentBytes.
  bool storeReport(const Json& report, ReportCategory category);

  /// Removes every report, those that could not be read, and what lies hidden beside them, whatever
  /// the switch says. True when nothing is left.
  bool eraseAll();

  /// For an upload of the category, from before its files are looked at until the last was removed.
  /// Null when another one is under way, in whatever process, and without a folder.
  std::unique_ptr<DocumentsLock> lockUpload(ReportCategory category);
  /// The category's files, in the folder's own order.
  std::vector<std::string> reportsOf(ReportCategory category);
  /// The report, an object. Absent for what cannot be read now, and for what never can be: that is
  /// set aside.
  std::optional<Json> readReport(const std::string& name);
  void removeReport(const std::string& name);

 private:
  struct Turn;
  bool prepare();
  ReportFate tryStore(const Json& report, ReportCategory category);
  Turn waitForTurn();
  void recoverUnfinished();
  void recover(const UnfinishedDocument& unfinished, std::vector<DocumentEntry>& entries);
  void setAside(const std::string& name);
  void removeOldestUnreadable();
  void log(const std::optional<PlatformError>& error) const;

  const std::shared_ptr<DocumentsFolder> documents_;
  const std::shared_ptr<ExceptionLogger> exceptions_;
  const std::shared_ptr<DeliveryLedger> ledger_;
  BoundedMutex storing_;
  std::atomic<bool> isRecovered_{false};
  std::atomic<bool> isTurnStalled_{false};
};

}  // namespace quorvance
