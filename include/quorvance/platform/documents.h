#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "quorvance/platform_error.h"

#pragma GCC visibility push(default)

namespace quorvance {

struct DocumentEntry {
  std::string name;
  /// When it was last changed or renamed, since 1970; only compared.
  std::int64_t changedNanoseconds = 0;
};

/// What came of reading a file.
struct DocumentRead {
  enum class Kind {
    whole,
    /// It is no plain file, or larger than kMaxDocumentBytes: it will never be readable.
    unreadable,
    /// This time only, as far as one can tell.
    failed,
  };
  Kind kind = Kind::whole;
  std::optional<PlatformError> error;
};

/// A file whose writer died before it had its name.
struct UnfinishedDocument {
  /// Where its bytes are, whole or not: read, rename and remove take it.
  std::string temporaryName;
  /// What it was to become; empty when that cannot be told.
  std::string name;
  /// It was to take the place of a file of that name, not to be another one.
  bool isReplacement = false;
};

/// Held until its end, on whatever thread that comes.
class DocumentsLock {
 public:
  virtual ~DocumentsLock() = default;
};

/// No report comes near this size.
inline constexpr std::size_t kMaxDocumentBytes = 8UL * 1024 * 1024;

/// One flat folder of small files that belongs to this application. Every call may wait for the
/// disk, so it is made on the file lane. Errors are values; an absent one is success.
class DocumentsFolder {
 public:
  virtual ~DocumentsFolder() = default;
  /// Makes the folder when it is missing; false when there is none to be had.
  virtual bool prepare() = 0;
  /// Every entry but hidden ones, in the folder's own order.
  virtual std::optional<PlatformError> list(std::vector<DocumentEntry>& entries) = 0;
  virtual DocumentRead read(const std::string& name, std::string& bytes) = 0;
  /// The file appears whole or not at all, and survives the end of the process.
  virtual std::optional<PlatformError> write(const std::string& name, std::string_view bytes) = 0;
  virtual std::optional<PlatformError> rename(const std::string& from, const std::string& to) = 0;
  virtual std::optional<PlatformError> remove(const std::string& name) = 0;

  // What a host's own folder may leave as it is; one that stands before another passes it on.

  /// Where the folder is in the file system, as an absolute path: a dying process writes there
  /// itself. Absent when it is in none. Always the same; any thread, never waits.
  virtual std::optional<std::string> fileSystemPath() const { return std::nullopt; }
  /// Of the names that list() gives, those that begin with the prefix. Asked for often: a folder
  /// that can tell that nothing was added or removed looks no further.
  virtual std::optional<PlatformError> listNames(std::string_view prefix,
                                                 std::vector<std::string>& names) {
    std::vector<DocumentEntry> entries;
    std::optional<PlatformError> error = list(entries);
    for (DocumentEntry& entry : entries) {
      if (entry.name.starts_with(prefix)) names.push_back(std::move(entry.name));
    }
    return error;
  }
  /// Keeps other processes that have this folder from the same purpose. Null when somebody had the
  /// lock for the whole time-out; a folder without locks gives one that keeps off nobody.
  virtual std::unique_ptr<DocumentsLock> lockAmongProcesses(std::string_view /*purpose*/,
                                                            std::chrono::milliseconds /*timeout*/) {
    return std::make_unique<DocumentsLock>();
  }
  /// What dead processes left, on the disk by then; nothing of a process that lives.
  virtual std::vector<UnfinishedDocument> unfinishedDocuments() { return {}; }
  /// Removes what the folder itself has put beside its documents: unfinished ones, whosoever they
  /// are, and locks. False when something is left.
  virtual bool removeHidden() { return true; }
};

}  // namespace quorvance

#pragma GCC visibility pop
