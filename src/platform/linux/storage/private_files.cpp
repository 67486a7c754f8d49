#include "platform/linux/storage/private_files.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <utility>

namespace quorvance {
namespace {

constexpr mode_t kPrivateFile = 0600;
constexpr mode_t kPrivateFolder = 0700;

template <class Call>
auto repeatWhenInterrupted(Call call) {
  auto result = call();
  while (result < 0 && errno == EINTR) result = call();
  return result;
}

FileDescriptor openFile(const std::string& path, int flags) {
  return FileDescriptor(repeatWhenInterrupted(
      [&] { return open(path.c_str(), flags | O_CLOEXEC | O_NONBLOCK, kPrivateFile); }));
}

bool isRegular(int descriptor) {
  struct stat status = {};
  return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

bool isFolder(const std::string& path) {
  struct stat status = {};
  return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

// Through a descriptor: what is narrowed is what was looked at.
void narrowToOwner(const std::string& path) {
  const FileDescriptor folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  struct stat status = {};
  if (!folder.isOpen() || fstat(folder.number(), &status) != 0) return;
  if (status.st_uid == geteuid()) static_cast<void>(fchmod(folder.number(), kPrivateFolder));
}

/// Of a folder that is there. What a group shares, or all on purpose (the sticky bit, as of /tmp),
/// is not ours to narrow, nor is the administrator's; some file systems know no modes. The files
/// are private all the same.
bool isUsableFolder(const std::string& path) {
  struct stat status = {};
  if (belongsToOthers(path) || stat(path.c_str(), &status) != 0) return false;
  const bool isOpen = (status.st_mode & S_IWOTH) != 0 && (status.st_mode & S_ISVTX) == 0;
  if (isOpen) narrowToOwner(path);
  return true;
}

bool makeOneFolder(const std::string& path) {
  if (mkdir(path.c_str(), kPrivateFolder) == 0) {
    return chmod(path.c_str(), kPrivateFolder) == 0;  // the umask may have taken bits away
  }
  return errno == EEXIST && isFolder(path);
}

bool writeAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count =
        repeatWhenInterrupted([&] { return write(descriptor, bytes.data(), bytes.size()); });
    if (count <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

bool fillFile(const FileDescriptor& file, std::string_view bytes) {
  if (!file.isOpen() || !isRegular(file.number())) return false;
  // Who finds it left behind sees that way that its writer is gone; a system without locks has
  // other signs.
  flock(file.number(), LOCK_EX | LOCK_NB);
  return fchmod(file.number(), kPrivateFile) == 0 && writeAll(file.number(), bytes) &&
         repeatWhenInterrupted([&] { return fdatasync(file.number()); }) == 0;
}

}  // namespace

FileDescriptor& FileDescriptor::operator=(FileDescriptor&& other) noexcept {
  if (this != &other) {
    reset();
    number_ = other.release();
  }
  return *this;
}

int FileDescriptor::release() { return std::exchange(number_, -1); }

void FileDescriptor::reset() {
  if (isOpen()) close(release());
}

SmallFile readSmallFile(const std::string& path, std::size_t maxBytes) {
  using Outcome = SmallFile::Outcome;
  const FileDescriptor file = openFile(path, O_RDONLY);
  if (!file.isOpen()) {
    const bool isMissing = errno == ENOENT || errno == ENOTDIR;
    return {isMissing ? Outcome::missing : Outcome::failed, {}};
  }
  if (!isRegular(file.number())) return {Outcome::notRegular, {}};
  std::array<char, 4096> buffer;
  std::string bytes;
  for (;;) {
    const ssize_t count =
        repeatWhenInterrupted([&] { return read(file.number(), buffer.data(), buffer.size()); });
    if (count < 0) return {Outcome::failed, {}};
    if (count == 0) return {Outcome::whole, std::move(bytes)};
    const auto length = static_cast<std::size_t>(count);
    if (length > maxBytes - bytes.size()) return {Outcome::tooLong, {}};
    bytes.append(buffer.data(), length);
  }
}

bool makePrivateFolder(const std::string& path) {
  if (path.empty()) return false;
  if (isFolder(path)) return isUsableFolder(path);
  for (std::size_t end = path.find('/', 1); end != std::string::npos;
       end = path.find('/', end + 1)) {
    if (!makeOneFolder(path.substr(0, end))) return false;
  }
  return makeOneFolder(path) && isUsableFolder(path);
}

bool belongsToOthers(const std::string& path) {
  struct stat status = {};
  if (lstat(path.c_str(), &status) != 0) return false;
  if (S_ISLNK(status.st_mode)) {
    if (status.st_uid != geteuid() && status.st_uid != 0) return true;
    if (stat(path.c_str(), &status) != 0) return false;
  }
  const bool isTrusted = status.st_uid == geteuid() || status.st_uid == 0;
  return !isTrusted && (status.st_mode & S_ISVTX) == 0;
}

bool replaceFile(const std::string& path, const std::string& temporaryPath,
                 std::string_view bytes) {
  const FileDescriptor file = openFile(temporaryPath, O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW);
  if (fillFile(file, bytes) && rename(temporaryPath.c_str(), path.c_str()) == 0) return true;
  // What stands there may be a part of a file on a full disk.
  unlink(temporaryPath.c_str());
  return false;
}

FileDescriptor openPlainFile(const std::string& path) {
  FileDescriptor file = openFile(path, O_RDONLY | O_NOFOLLOW);
  if (file.isOpen() && !isRegular(file.number())) file.reset();
  return file;
}

FileDescriptor openLockFile(const std::string& path) {
  return openFile(path, O_RDWR | O_CREAT | O_NOFOLLOW);
}

}  // namespace quorvance
