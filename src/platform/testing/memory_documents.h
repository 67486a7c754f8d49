#pragma once

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "quorvance/platform/documents.h"

namespace quorvance {

/// A folder in memory, with switches for a disk in trouble and for other processes. Its order is
/// that of the names; hidden ones are not listed.
class MemoryDocuments : public DocumentsFolder {
 public:
  std::map<std::string, std::string> files;
  bool isAvailable = true;
  /// What these calls answer while set.
  std::optional<PlatformError> listError;
  std::optional<PlatformError> readError;
  std::optional<PlatformError> writeError;
  std::optional<PlatformError> removeError;
  /// How often the folder was listed or a file read.
  int reads = 0;
  /// Names that are no plain files.
  std::vector<std::string> oddNames;
  /// Of those that are among the files.
  std::vector<UnfinishedDocument> unfinished;
  /// Purposes for which another process has the lock.
  std::set<std::string, std::less<>> lockedElsewhere;

  bool prepare() override;
  std::optional<PlatformError> list(std::vector<DocumentEntry>& entries) override;
  DocumentRead read(const std::string& name, std::string& bytes) override;
  std::optional<PlatformError> write(const std::string& name, std::string_view bytes) override;
  std::optional<PlatformError> rename(const std::string& from, const std::string& to) override;
  std::optional<PlatformError> remove(const std::string& name) override;

  std::unique_ptr<DocumentsLock> lockAmongProcesses(std::string_view purpose,
                                                    std::chrono::milliseconds timeout) override;
  std::vector<UnfinishedDocument> unfinishedDocuments() override;

  std::size_t count(std::string_view prefix) const;

 private:
  std::int64_t changes_ = 0;
  std::map<std::string, std::int64_t> changedAt_;
  // Purposes for which somebody here has the lock; shared with the locks.
  std::shared_ptr<std::set<std::string, std::less<>>> locked_ =
      std::make_shared<std::set<std::string, std::less<>>>();
};

}  // namespace quorvance
