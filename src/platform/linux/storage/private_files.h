#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quorvance {

/// A file descriptor that closes itself.
class FileDescriptor {
 public:
  explicit FileDescriptor(int number = -1) : number_(number) {}
  ~FileDescriptor() { reset(); }
  FileDescriptor(FileDescriptor&& other) noexcept : number_(other.release()) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept;

  bool isOpen() const { return number_ >= 0; }
  int number() const { return number_; }
  int release();
  void reset();

 private:
  int number_;
};

/// What reading a whole small file came to.
struct SmallFile {
  enum class Outcome {
    whole,
    missing,
    /// Longer than asked for.
    tooLong,
    /// A folder, a pipe, a device.
    notRegular,
    /// No permission, an error of the disk.
    failed,
  };
  Outcome outcome = Outcome::failed;
  /// Empty unless the file was read whole.
  std::string bytes;
};

/// Never waits for a pipe's other end. Files without a size of their own ("/proc") are read too.
SmallFile readSmallFile(const std::string& path, std::size_t maxBytes);

/// Makes the folder and its missing parents, each with mode 0700 whatever the umask. One of this
/// user's that is there and that all may write to is narrowed to that mode, unless it is shared on
/// purpose (the sticky bit). True when it is there at the end and nobody else's but the
/// administrator's.
bool makePrivateFolder(const std::string& path);

/// Whether the path leads to a folder of another user (but the administrator, and unless it is
/// shared on purpose), or through a link of another user's that is not the administrator's:
/// whatever lies there may be that user's making.
bool belongsToOthers(const std::string& path);

/// Replaces or makes `path` with mode 0600 in one step: a reader sees the old bytes or the new.
/// `temporaryPath` is in the same folder and is overwritten; the caller keeps others off it, and it
/// is locked while it is there. False leaves `path` as it was.
bool replaceFile(const std::string& path, const std::string& temporaryPath, std::string_view bytes);

/// Opens what is no pipe, device or link; otherwise closed.
FileDescriptor openPlainFile(const std::string& path);

/// Opens a file that only stands for a lock, and makes it when it is missing.
FileDescriptor openLockFile(const std::string& path);

}  // namespace quorvance
