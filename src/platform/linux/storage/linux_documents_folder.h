#pragma once

#include <atomic>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "quorvance/platform/documents.h"

namespace quorvance {

/// The data folder of one application. Any thread; the folder is made with mode 0700 when it is
/// first used or was removed since, files have mode 0600. A file is written under a hidden
/// temporary name, brought to the disk and renamed; temporary files that a dead process left are
/// removed with the first use.
class LinuxDocumentsFolder : public DocumentsFolder {
 public:
  /// Absent: there is none to be had.
  explicit LinuxDocumentsFolder(std::optional<std::string> path);

  bool prepare() override;
  std::optional<PlatformError> list(std::vector<DocumentEntry>& entries) override;
  DocumentRead read(const std::string& name, std::string& bytes) override;
  std::optional<PlatformError> write(const std::string& name, std::string_view bytes) override;
  std::optional<PlatformError> rename(const std::string& from, const std::string& to) override;
  std::optional<PlatformError> remove(const std::string& name) override;
  std::optional<std::string> fileSystemPath() const override { return path_; }

 private:
  std::string at(std::string_view name) const;
  void removeStaleTemporaries() const;

  const std::optional<std::string> path_;
  std::atomic<bool> isTidied_{false};
};

}  // namespace quorvance
