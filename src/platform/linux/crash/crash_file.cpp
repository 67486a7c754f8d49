#include "platform/linux/crash/crash_file.h"

#include <dirent.h>
#include <fcntl.h>
#include <stdio.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

#include "base/uuid.h"
#include "platform/linux/storage/temporary_name.h"

namespace quorvance {
namespace {

constexpr mode_t kCrashFileMode = 0600;
constexpr mode_t kCrashFolderMode = 0700;

FileDescriptor spareDescriptor() { return FileDescriptor(open("/dev/null", O_RDONLY | O_CLOEXEC)); }

std::vector<std::string> withThoseAbove(const std::string& path) {
  std::vector<std::string> paths;
  for (std::size_t end = path.find('/', 1); end != std::string::npos;
       end = path.find('/', end + 1)) {
    paths.push_back(path.substr(0, end));
  }
  paths.push_back(path);
  return paths;
}

bool writeWhole(int file, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = write(file, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

}  // namespace

CrashFile::CrashFile(const std::string& folder, std::string category, std::size_t maxFiles)
    : folderPaths_(withThoseAbove(folder)),
      category_(std::move(category)),
      maxFiles_(maxFiles),
      name_(category_ + randomUuid() + ".json"),
      firstTemporary_(TemporaryName::make(name_, false)),
      secondTemporary_(TemporaryName::make(name_, true)),
      spares_{spareDescriptor(), spareDescriptor(), spareDescriptor()} {}

CrashFile::State CrashFile::open() {
  folder_ = openFolder();
  if (folder_ < 0 && errno == ENOENT) {
    makeFolders();
    folder_ = openFolder();
  }
  if (folder_ < 0) return State::failed;
  return hasRoom() ? State::ready : State::full;
}

int CrashFile::openAt(int folder, const char* name, int flags) {
  const int first = openat(folder, name, flags | O_CLOEXEC, kCrashFileMode);
  if (first >= 0 || errno != EMFILE) return first;
  for (FileDescriptor& spare : spares_) spare.reset();
  return openat(folder, name, flags | O_CLOEXEC, kCrashFileMode);
}

int CrashFile::openFolder() {
  return openAt(AT_FDCWD, folderPaths_.back().c_str(), O_RDONLY | O_DIRECTORY);
}

void CrashFile::makeFolders() const {
  for (const std::string& path : folderPaths_) {
    // The umask may take bits away.
    if (mkdir(path.c_str(), kCrashFolderMode) == 0) chmod(path.c_str(), kCrashFolderMode);
  }
}

// A folder that cannot be listed has no room, as for every other report.
bool CrashFile::hasRoom() {
  std::size_t found = 0;
  for (;;) {
    const ssize_t bytes = getdents64(folder_, entries_.data(), entries_.size());
    if (bytes <= 0) return bytes == 0 && found < maxFiles_;
    for (std::size_t at = 0; at < static_cast<std::size_t>(bytes);) {
      std::uint16_t length = 0;
      std::memcpy(&length, entries_.data() + at + offsetof(dirent64, d_reclen), sizeof(length));
      const char* const name = entries_.data() + at + offsetof(dirent64, d_name);
      if (std::string_view(name).starts_with(category_)) ++found;
      at += length;
    }
  }
}

bool CrashFile::isThere() const {
  struct stat status = {};
  return fstatat(folder_, name_.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
}

bool CrashFile::fill(int file, std::string_view bytes) const {
  flock(file, LOCK_EX | LOCK_NB);  // as every writer of a temporary does
  // The umask may have taken bits away.
  return fchmod(file, kCrashFileMode) == 0 && writeWhole(file, bytes);
}

bool CrashFile::replace(std::string_view bytes) {
  const bool isFirst = file_ < 0;
  const char* const temporary = (isFirst ? firstTemporary_ : secondTemporary_).c_str();
  const int file = openAt(folder_, temporary, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW);
  if (file < 0) return false;
  if (fill(file, bytes) && (isFirst || isThere()) &&
      renameat(folder_, temporary, folder_, name_.c_str()) == 0) {
    if (!isFirst) close(file_);
    file_ = file;
    return true;
  }
  close(file);
  removeTemporaries();
  return false;
}

void CrashFile::synchronize() {
  if (file_ >= 0) fdatasync(file_);
  fsync(folder_);
}

void CrashFile::removeTemporaries() {
  if (folder_ < 0) return;
  unlinkat(folder_, firstTemporary_.c_str(), 0);
  unlinkat(folder_, secondTemporary_.c_str(), 0);
}

}  // namespace quorvance
