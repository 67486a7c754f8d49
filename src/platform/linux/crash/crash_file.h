#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/storage/private_files.h"

namespace quorvance {

/// One report file of a dying process: its names are chosen beforehand, its folder is opened when
/// the process dies, so that a folder that was made anew in between serves. Made in ordinary
/// context; the rest is async-signal-safe. Not thread-safe.
class CrashFile {
 public:
  /// Files are named by `category`, a UUID and ".json"; with `maxFiles` of the category there, and
  /// without a folder's path, none is written.
  CrashFile(const std::string& folder, std::string category, std::size_t maxFiles);

  enum class State { ready, full, failed };
  /// Opens the folder, which is made anew with all above it when it is missing, and looks whether
  /// there is room. First of all, and once.
  State open();
  /// Writes the file, the second time over the first, in one step; false leaves it as it was. One
  /// that somebody has sent and removed in between is not written again.
  bool replace(std::string_view bytes);
  /// Brings the file and its name to the disk.
  void synchronize();
  /// Removes what an interrupted replace() left.
  void removeTemporaries();

 private:
  int openAt(int folder, const char* name, int flags);
  int openFolder();
  void makeFolders() const;
  bool hasRoom();
  bool isThere() const;
  bool fill(int file, std::string_view bytes) const;

  /// Those above it first, the folder itself last.
  const std::vector<std::string> folderPaths_;
  const std::string category_;
  const std::size_t maxFiles_;
  const std::string name_;
  const std::string firstTemporary_;
  const std::string secondTemporary_;
  /// Closed when no other can be had: a process may well die of having too many open.
  std::array<FileDescriptor, 3> spares_;
  int folder_ = -1;
  int file_ = -1;  // the file, once it was written
  alignas(std::size_t) std::array<char, 4096> entries_{};
};

}  // namespace quorvance
