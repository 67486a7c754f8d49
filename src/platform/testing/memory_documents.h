#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "quorvance/platform/documents.h"

namespace quorvance {

/// A folder in memory, with switches for a disk in trouble. Its order is that of the names.
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

  bool prepare() override;
  std::optional<PlatformError> list(std::vector<DocumentEntry>& entries) override;
  DocumentRead read(const std::string& name, std::string& bytes) override;
  std::optional<PlatformError> write(const std::string& name, std::string_view bytes) override;
  std::optional<PlatformError> rename(const std::string& from, const std::string& to) override;
  std::optional<PlatformError> remove(const std::string& name) override;

  std::size_t count(std::string_view prefix) const;

 private:
  std::int64_t changes_ = 0;
  std::map<std::string, std::int64_t> changedAt_;
};

}  // namespace quorvance
