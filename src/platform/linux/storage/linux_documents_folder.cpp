#include "platform/linux/storage/linux_documents_folder.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <ctime>
#include <memory>
#include <utility>

#include "base/uuid.h"
#include "platform/linux/storage/private_files.h"

namespace quorvance {
namespace {

constexpr std::string_view kTemporaryPrefix = ".report-";
// Older ones belong to nobody: a report is written in milliseconds.
constexpr std::time_t kStaleSeconds = 3600;

struct DirectoryCloser {
  void operator()(DIR* directory) const { closedir(directory); }
};
using Directory = std::unique_ptr<DIR, DirectoryCloser>;

PlatformError errorOf(int number, const std::string& name) {
  PlatformError error = PlatformError::fromErrorCode({number, std::system_category()});
  error.failureReason = name;
  return error;
}

std::int64_t nanosecondsOf(const struct timespec& time) {
  return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

// Calls visit(name, status) for every entry that is still there.
template <class Visit>
std::optional<PlatformError> visitEntries(const std::string& path, Visit visit) {
  const Directory directory(opendir(path.c_str()));
  if (!directory) return errorOf(errno, path);
  for (;;) {
    errno = 0;
    const dirent* const entry = readdir(directory.get());
    if (entry == nullptr) break;
    const std::string name = static_cast<const char*>(entry->d_name);
    struct stat status = {};
    const int looked = fstatat(dirfd(directory.get()), name.c_str(), &status, AT_SYMLINK_NOFOLLOW);
    if (looked == 0) visit(name, status);
  }
  if (errno != 0) return errorOf(errno, path);
  return std::nullopt;
}

// A report is durable once its name is: the folder itself goes to the disk too.
void synchronizeFolder(const std::string& path) {
  const FileDescriptor folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (folder.isOpen()) fsync(folder.number());
}

}  // namespace

LinuxDocumentsFolder::LinuxDocumentsFolder(std::optional<std::string> path)
    : path_(std::move(path)) {}

std::string LinuxDocumentsFolder::at(std::string_view name) const {
  return path_.value_or(std::string()) + "/" + std::string(name);
}

bool LinuxDocumentsFolder::prepare() {
  if (!path_ || !makePrivateFolder(*path_)) return false;
  if (!isTidied_.exchange(true)) removeStaleTemporaries();
  return true;
}

void LinuxDocumentsFolder::removeStaleTemporaries() const {
  std::vector<std::string> stale;
  const std::time_t limit = std::time(nullptr) - kStaleSeconds;
  // What cannot be listed now is looked at in the next process.
  visitEntries(*path_, [&](const std::string& name, const struct stat& status) {
    if (name.starts_with(kTemporaryPrefix) && status.st_mtime < limit) stale.push_back(name);
  });
  for (const std::string& name : stale) unlink(at(name).c_str());
}

std::optional<PlatformError> LinuxDocumentsFolder::list(std::vector<DocumentEntry>& entries) {
  return visitEntries(path_.value_or(std::string()),
                      [&](const std::string& name, const struct stat& status) {
                        if (name.starts_with('.')) return;
                        entries.push_back({name, nanosecondsOf(status.st_ctim)});
                      });
}

DocumentRead LinuxDocumentsFolder::read(const std::string& name, std::string& bytes) {
  using Kind = DocumentRead::Kind;
  struct stat status = {};
  if (lstat(at(name).c_str(), &status) != 0) return {Kind::failed, errorOf(errno, name)};
  // A link may lead out of the folder, a pipe may never end.
  if (!S_ISREG(status.st_mode)) return {Kind::unreadable, errorOf(EINVAL, name)};
  SmallFile file = readSmallFile(at(name), kMaxDocumentBytes);
  switch (file.outcome) {
    case SmallFile::Outcome::whole:
      bytes = std::move(file.bytes);
      return {};
    case SmallFile::Outcome::tooLong:
      return {Kind::unreadable, errorOf(EFBIG, name)};
    case SmallFile::Outcome::missing:
    case SmallFile::Outcome::notRegular:
    case SmallFile::Outcome::failed:
      break;
  }
  return {Kind::failed, errorOf(errno, name)};
}

std::optional<PlatformError> LinuxDocumentsFolder::write(const std::string& name,
                                                         std::string_view bytes) {
  const std::string temporary = at(std::string(kTemporaryPrefix) + randomUuid());
  errno = 0;
  if (!replaceFile(at(name), temporary, bytes)) return errorOf(errno != 0 ? errno : EIO, name);
  synchronizeFolder(*path_);
  return std::nullopt;
}

std::optional<PlatformError> LinuxDocumentsFolder::rename(const std::string& from,
                                                          const std::string& to) {
  if (std::rename(at(from).c_str(), at(to).c_str()) == 0) return std::nullopt;
  return errorOf(errno, from);
}

std::optional<PlatformError> LinuxDocumentsFolder::remove(const std::string& name) {
  if (std::remove(at(name).c_str()) == 0) return std::nullopt;
  return errorOf(errno, name);
}

}  // namespace quorvance
