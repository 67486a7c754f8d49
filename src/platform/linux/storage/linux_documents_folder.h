#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "quorvance/platform/documents.h"

namespace quorvance {

/// The data folder of one application. Any thread; the folder is made with mode 0700 when it is
/// first used or was removed since, or narrowed to it; another user's is not used, which the log
/// tells once. Files have mode 0600. A file is written under a hidden
/// temporary name (temporary_name.h), brought to the disk and renamed. Locks are hidden files too,
/// ".lock-" and the purpose.
class LinuxDocumentsFolder : public DocumentsFolder {
 public:
  /// File times are as coarse as two seconds: what changes within that may leave no trace in them.
  static constexpr std::chrono::seconds kCoarsestFileTime{2};

  /// Absent: there is none to be had.
  explicit LinuxDocumentsFolder(std::optional<std::string> path,
                                std::chrono::nanoseconds coarsestFileTime = kCoarsestFileTime);

  bool prepare() override;
  std::optional<PlatformError> list(std::vector<DocumentEntry>& entries) override;
  std::optional<PlatformError> listNames(std::string_view prefix,
                                         std::vector<std::string>& names) override;
  DocumentRead read(const std::string& name, std::string& bytes) override;
  std::optional<PlatformError> write(const std::string& name, std::string_view bytes) override;
  std::optional<PlatformError> rename(const std::string& from, const std::string& to) override;
  std::optional<PlatformError> remove(const std::string& name) override;
  std::optional<std::string> fileSystemPath() const override { return path_; }
  std::unique_ptr<DocumentsLock> lockAmongProcesses(std::string_view purpose,
                                                    std::chrono::milliseconds timeout) override;
  std::vector<UnfinishedDocument> unfinishedDocuments() override;
  bool removeHidden() override;

 private:
  /// The names as they stood at one change of the folder. Other processes may add some: the kernel
  /// then gives the folder another time.
  struct Listing;

  std::string at(std::string_view name) const;
  bool isAbandoned(const std::string& temporaryName) const;
  void forgetNames();

  const std::optional<std::string> path_;
  const std::chrono::nanoseconds coarsestFileTime_;
  std::atomic<bool> isRefusalTold_{false};
  std::mutex mutex_;
  std::shared_ptr<const Listing> listing_;
  // Of this process: a listing that one of them overtook is not kept.
  std::uint64_t changes_ = 0;
};

}  // namespace quorvance
