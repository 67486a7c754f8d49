#include "platform/linux/storage/linux_documents_folder.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <iterator>
#include <memory>
#include <utility>

#include "base/debug.h"
#include "platform/linux/storage/file_lock.h"
#include "platform/linux/storage/private_files.h"
#include "platform/linux/storage/temporary_name.h"

namespace quorvance {
namespace {

constexpr std::string_view kLockPrefix = ".lock-";

struct FolderCloser {
  void operator()(DIR* directory) const { closedir(directory); }
};
using Directory = std::unique_ptr<DIR, FolderCloser>;

PlatformError errorOf(int number, const std::string& name) {
  PlatformError error = PlatformError::fromErrorCode({number, std::system_category()});
  error.failureReason = name;
  return error;
}

std::int64_t nanosecondsOf(const struct timespec& time) {
  return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

// Calls visit(folder, name) for every entry.
template <class Visit>
std::optional<PlatformError> visitNames(const std::string& path, Visit visit) {
  const Directory directory(opendir(path.c_str()));
  if (!directory) return errorOf(errno, path);
  for (;;) {
    errno = 0;
    const dirent* const entry = readdir(directory.get());
    if (entry == nullptr) break;
    visit(dirfd(directory.get()), std::string(static_cast<const char*>(entry->d_name)));
  }
  if (errno != 0) return errorOf(errno, path);
  return std::nullopt;
}

/// What tells one state of a folder from another. The time is the kernel's own: nobody can set it.
struct FolderStamp {
  dev_t device = 0;
  ino_t number = 0;
  std::int64_t changed = 0;

  friend bool operator==(const FolderStamp&, const FolderStamp&) = default;

  static std::optional<FolderStamp> of(const std::string& path) {
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0) return std::nullopt;
    return FolderStamp{status.st_dev, status.st_ino, nanosecondsOf(status.st_ctim)};
  }

  /// Whether the next change, from now on, makes another stamp.
  bool isSettled(std::chrono::nanoseconds coarsestFileTime) const {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::nanoseconds(changed) < now - coarsestFileTime;
  }
};

class FolderLock : public DocumentsLock {
 public:
  FolderLock(const std::string& path, std::chrono::milliseconds timeout) : lock_(path, timeout) {}
  bool isHeldElsewhere() const { return lock_.outcome() == FileLock::Outcome::heldElsewhere; }

 private:
  const FileLock lock_;
};

// A report is durable once its name is: the folder itself goes to the disk too.
void synchronizeFolder(const std::string& path) {
  const FileDescriptor folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (folder.isOpen()) fsync(folder.number());
}

}  // namespace

struct LinuxDocumentsFolder::Listing {
  FolderStamp stamp;
  std::vector<std::string> names;
};

LinuxDocumentsFolder::LinuxDocumentsFolder(std::optional<std::string> path,
                                           std::chrono::nanoseconds coarsestFileTime)
    : path_(std::move(path)), coarsestFileTime_(coarsestFileTime) {}

std::string LinuxDocumentsFolder::at(std::string_view name) const {
  return path_.value_or(std::string()) + "/" + std::string(name);
}

bool LinuxDocumentsFolder::prepare() {
  if (!path_) return false;
  if (makePrivateFolder(*path_)) return true;
  if (belongsToOthers(*path_) && !isRefusalTold_.exchange(true)) {
    logMessage(LogLevel::error, "the data folder " + *path_ + " is another user's, and not used");
  }
  return false;
}

// What cannot be locked at all is not locked: a report matters more than a place in its category.
std::unique_ptr<DocumentsLock> LinuxDocumentsFolder::lockAmongProcesses(
    std::string_view purpose, std::chrono::milliseconds timeout) {
  if (!path_) return std::make_unique<DocumentsLock>();
  auto lock =
      std::make_unique<FolderLock>(at(std::string(kLockPrefix) + std::string(purpose)), timeout);
  if (lock->isHeldElsewhere()) return nullptr;
  return lock;
}

// A writer has its file locked from just after it made it; its process tells of the moment before.
bool LinuxDocumentsFolder::isAbandoned(const std::string& temporaryName) const {
  const FileDescriptor file = openPlainFile(at(temporaryName));
  if (!file.isOpen()) return false;
  if (flock(file.number(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) return false;
  const auto parsed = TemporaryName::parse(temporaryName);
  if (parsed && parsed->isProcessAlive()) return false;
  fdatasync(file.number());
  return true;
}

std::vector<UnfinishedDocument> LinuxDocumentsFolder::unfinishedDocuments() {
  std::vector<std::string> names;
  // What cannot be listed now is looked at in the next process.
  visitNames(path_.value_or(std::string()), [&](int /*folder*/, std::string name) {
    if (name.starts_with(TemporaryName::kPrefix)) names.push_back(std::move(name));
  });
  std::vector<UnfinishedDocument> unfinished;
  for (std::string& name : names) {
    if (!isAbandoned(name)) continue;
    const TemporaryName parsed = TemporaryName::parse(name).value_or(TemporaryName());
    unfinished.push_back({std::move(name), parsed.document, parsed.isReplacement});
  }
  return unfinished;
}

// A writer that still lives then finds its name gone, and its document is dropped.
bool LinuxDocumentsFolder::removeHidden() {
  std::vector<std::string> names;
  const auto error =
      visitNames(path_.value_or(std::string()), [&](int /*folder*/, std::string name) {
        const bool isOurs =
            name.starts_with(TemporaryName::kPrefix) || name.starts_with(kLockPrefix);
        if (isOurs) names.push_back(std::move(name));
      });
  bool isAllGone = !error;
  for (const std::string& name : names) {
    if (unlink(at(name).c_str()) != 0 && errno != ENOENT) isAllGone = false;
  }
  return isAllGone;
}

std::optional<PlatformError> LinuxDocumentsFolder::list(std::vector<DocumentEntry>& entries) {
  return visitNames(path_.value_or(std::string()), [&](int folder, std::string name) {
    struct stat status = {};
    if (name.starts_with('.')) return;
    // It may be gone by now.
    if (fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) return;
    entries.push_back({std::move(name), nanosecondsOf(status.st_ctim)});
  });
}

// The stamp is older than the names: what is added meanwhile makes it another one.
std::optional<PlatformError> LinuxDocumentsFolder::listNames(std::string_view prefix,
                                                             std::vector<std::string>& names) {
  const std::string path = path_.value_or(std::string());
  const std::optional<FolderStamp> stamp = FolderStamp::of(path);
  const bool isSettled = stamp && stamp->isSettled(coarsestFileTime_);
  std::shared_ptr<const Listing> listing;
  std::uint64_t changes = 0;
  {
    const std::lock_guard lock(mutex_);
    listing = listing_;
    changes = changes_;
  }
  if (!listing || !stamp || listing->stamp != *stamp) {
    auto fresh = std::make_shared<Listing>(Listing{stamp.value_or(FolderStamp()), {}});
    std::optional<PlatformError> error = visitNames(path, [&](int /*folder*/, std::string name) {
      if (!name.starts_with('.')) fresh->names.push_back(std::move(name));
    });
    if (error) return error;
    listing = std::move(fresh);
    const std::lock_guard lock(mutex_);
    listing_ = isSettled && changes == changes_ ? listing : nullptr;
  }
  std::copy_if(listing->names.begin(), listing->names.end(), std::back_inserter(names),
               [&](const std::string& name) { return name.starts_with(prefix); });
  return std::nullopt;
}

void LinuxDocumentsFolder::forgetNames() {
  const std::lock_guard lock(mutex_);
  ++changes_;
  listing_ = nullptr;
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
  const std::string temporary = at(TemporaryName::make(name, false));
  errno = 0;
  if (!replaceFile(at(name), temporary, bytes)) return errorOf(errno != 0 ? errno : EIO, name);
  forgetNames();
  synchronizeFolder(*path_);
  return std::nullopt;
}

std::optional<PlatformError> LinuxDocumentsFolder::rename(const std::string& from,
                                                          const std::string& to) {
  if (std::rename(at(from).c_str(), at(to).c_str()) != 0) return errorOf(errno, from);
  forgetNames();
  synchronizeFolder(*path_);
  return std::nullopt;
}

std::optional<PlatformError> LinuxDocumentsFolder::remove(const std::string& name) {
  if (std::remove(at(name).c_str()) != 0) return errorOf(errno, name);
  forgetNames();
  return std::nullopt;
}

}  // namespace quorvance
