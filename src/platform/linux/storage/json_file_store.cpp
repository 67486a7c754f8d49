#include "platform/linux/storage/json_file_store.h"

#include <dirent.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <map>
#include <mutex>
#include <new>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "base/collection.h"
#include "base/debug.h"
#include "base/forked_child.h"
#include "base/json.h"
#include "base/out_of_memory.h"
#include "platform/linux/storage/file_lock.h"
#include "platform/linux/storage/private_files.h"
#include "platform/linux/threads/process_exit.h"

namespace quorvance {
namespace {

using Keys = std::set<std::string, std::less<>>;
using Entries = std::map<std::string, StoredEntry, std::less<>>;

void sayOfState(const std::string& path, std::string_view what) {
  debugPrint("state file " + path + ": " + std::string(what));
}

/// The object in the file: empty for a missing file, absent for one that holds something else.
std::optional<Json> objectIn(const SmallFile& file) {
  if (file.outcome == SmallFile::Outcome::missing) return Json::object();
  if (file.outcome != SmallFile::Outcome::whole) return std::nullopt;
  std::optional<Json> value = parseJson(file.bytes);
  if (!value || !value->is_object()) return std::nullopt;
  return value;
}

Entries entriesOf(const Json& object) {
  Entries entries;
  for (const auto& [key, value] : object.get_ref<const Json::object_t&>()) {
    const auto* text = value.get_ptr<const std::string*>();
    entries.emplace(key, text != nullptr ? StoredEntry{StoredEntry::Kind::text, *text}
                                         : StoredEntry{StoredEntry::Kind::other, {}});
  }
  return entries;
}

/// A file that cannot be read now may be readable the next time: it is neither empty nor spoilt.
bool isUnreadableForNow(const SmallFile& file) {
  return file.outcome == SmallFile::Outcome::failed;
}

/// What memory has for the disk.
struct Pending {
  Entries entries;
  /// Those whose texts the disk may not have.
  Keys unwritten;
  /// Of those, the ones that yield to whatever the file has.
  Keys defaults;
};

struct StateFolderCloser {
  void operator()(DIR* directory) const { closedir(directory); }
};

/// What a store makes in the folder: the state, its temporaries, what it sets aside, the lock last.
/// Absent where nobody can tell.
std::optional<std::vector<std::string>> namesOfState(const std::string& folder) {
  std::vector<std::string> names;
  const std::unique_ptr<DIR, StateFolderCloser> directory(opendir(folder.c_str()));
  if (directory == nullptr) return errno == ENOENT ? std::optional(names) : std::nullopt;
  for (;;) {
    errno = 0;
    const dirent* const entry = readdir(directory.get());
    if (entry == nullptr && errno != 0) return std::nullopt;
    if (entry == nullptr) break;
    const std::string_view name = static_cast<const char*>(entry->d_name);
    const bool isState =
        name == "state.json" || (name.starts_with("state.") && name.ends_with("tmp"));
    if (isState || name.starts_with("unreadable-state")) names.emplace_back(name);
  }
  names.emplace_back("state.lock");
  return names;
}

constexpr const char* kUnreadableForNow = "it cannot be read";
constexpr int kMaxSetAside = 10;

}  // namespace

/// The disk side of a store; the file lane only, save for load().
class JsonFileStore::StateFile {
 public:
  explicit StateFile(std::string folder)
      : folder_(std::move(folder)), path_(folder_ + "/state.json") {}

  const std::string& path() const { return path_; }
  /// What another user may have put there counts as missing.
  SmallFile load() const {
    if (belongsToOthers(folder_)) return {SmallFile::Outcome::missing, {}};
    return readSmallFile(path_, kMaxFileBytes);
  }
  /// Makes the file hold the texts of what is unwritten, or every text when it is missing or set
  /// aside. Returns null, or in words what went wrong; `found` is what it held before.
  const char* merge(const Pending& pending, Entries& found);
  /// Only reads.
  const char* look(Entries& found) const;
  /// Removes the file and whatever was made beside it.
  const char* erase();

 private:
  const char* replace(Json& object, const Keys& wanted, const SmallFile& file, bool isLocked) const;
  void setAside() const;
  void put(Json& object, const std::string& key, const StoredEntry& entry) const;
  void drop(Json& object, const std::string& key) const;

  const std::string folder_;
  const std::string path_;
  // The last wait for the lock was in vain: until it is free again, none is made.
  bool isLockStalled_ = false;
};

const char* JsonFileStore::StateFile::look(Entries& found) const {
  const SmallFile file = load();
  if (isUnreadableForNow(file)) return kUnreadableForNow;
  const std::optional<Json> object = objectIn(file);
  if (object) found = entriesOf(*object);
  return nullptr;
}

// The lock goes last, while it is held: whoever waits for it then makes another one.
const char* JsonFileStore::StateFile::erase() {
  const FileLock lock(folder_ + "/state.lock", isLockStalled_ ? kMaxLockWait.zero() : kMaxLockWait);
  isLockStalled_ = lock.outcome() == FileLock::Outcome::heldElsewhere;
  if (isLockStalled_) return "it cannot be locked, and is not erased";
  const auto names = namesOfState(folder_);
  if (!names) return "its folder cannot be looked at, and is not erased";
  bool isAllGone = true;
  for (const std::string& name : *names) {
    if (unlink((folder_ + "/" + name).c_str()) != 0 && errno != ENOENT) isAllGone = false;
  }
  return isAllGone ? nullptr : "it cannot be erased";
}

// What cannot be locked at all is not locked, as for the reports beside it.
const char* JsonFileStore::StateFile::merge(const Pending& pending, Entries& found) {
  if (!makePrivateFolder(folder_)) return "its folder cannot be made, or is another user's";
  const FileLock lock(folder_ + "/state.lock", isLockStalled_ ? kMaxLockWait.zero() : kMaxLockWait);
  isLockStalled_ = lock.outcome() == FileLock::Outcome::heldElsewhere;
  if (isLockStalled_) return "it cannot be locked";
  const SmallFile file = load();
  if (isUnreadableForNow(file)) return kUnreadableForNow;
  std::optional<Json> object = objectIn(file);
  const JsonDiscarder discarder(object);
  const bool isNew = !object || file.outcome == SmallFile::Outcome::missing;
  if (!object) {
    setAside();
    object = Json::object();
  }
  found = entriesOf(*object);
  Keys wanted;
  for (const auto& [key, entry] : pending.entries) {
    const bool isYielding = pending.defaults.contains(key) && found.contains(key);
    if (!isYielding && (isNew || pending.unwritten.contains(key))) {
      put(*object, key, entry);
      wanted.insert(key);
    }
  }
  if (wanted.empty()) return nullptr;
  return replace(*object, wanted, file, lock.outcome() == FileLock::Outcome::held);
}

const char* JsonFileStore::StateFile::replace(Json& object, const Keys& wanted,
                                              const SmallFile& file, bool isLocked) const {
  std::optional<std::string> bytes = writeJson(object);
  if (!bytes || bytes->size() > kMaxFileBytes) {
    for (const std::string& key : wanted) drop(object, key);
    bytes = writeJson(object);
  }
  if (!bytes) return "it cannot be JSON";
  if (*bytes == file.bytes) return nullptr;
  // Without the lock nobody else is kept off a name that all processes use.
  const std::string owner = isLocked ? "" : "." + std::to_string(getpid());
  const bool isReplaced = replaceFile(path_, folder_ + "/state" + owner + ".tmp", *bytes);
  return isReplaced ? nullptr : "it cannot be written";
}

// A folder under the name may stand in the way of another name. Where none is free, a file is
// overwritten and a folder stays.
void JsonFileStore::StateFile::setAside() const {
  const std::string name = folder_ + "/unreadable-state";
  for (int i = 1; i <= kMaxSetAside; ++i) {
    const std::string number = i == 1 ? "" : "-" + std::to_string(i);
    if (std::rename(path_.c_str(), (name + number + ".json").c_str()) == 0) return;
  }
}

void JsonFileStore::StateFile::put(Json& object, const std::string& key,
                                   const StoredEntry& entry) const {
  if (entry.kind != StoredEntry::Kind::text) return;
  if (entry.text.size() > kMaxTextBytes) {
    drop(object, key);
  } else {
    setMember(object, key, entry.text);
  }
}

// An older text would come back with the next start; none is better.
void JsonFileStore::StateFile::drop(Json& object, const std::string& key) const {
  sayOfState(path_, key + " is too long to be stored, the next start finds none");
  object.erase(key);
}

struct JsonFileStore::State : ExitParticipant, std::enable_shared_from_this<State> {
  explicit State(std::optional<std::string> folder) {
    if (folder) file.emplace(std::move(*folder));
  }

  std::optional<StateFile> file;
  std::mutex mutex;
  // The first use has tried to read the file.
  bool isLoadTried = false;
  // The file lane writes what it has taken out of `pending`.
  bool isFlushing = false;
  // Memory has what the file held.
  bool isLoaded = false;
  Pending pending;
  // The disk is to forget as memory has, before anything further is written.
  bool isErasureDue = false;
  // What was found on the disk before an erasure is no news after it.
  std::uint64_t erasures = 0;
  // Flushes on the file lane. Made beforehand: asking for it needs no memory.
  std::shared_ptr<PreparedTask> flushTask;

  bool load();
  void change(std::string_view key, std::string_view text);
  void changeToDefault(std::string_view key, std::string_view text);
  void flush();
  void forget();
  const char* eraseIfDue();
  void adopt(const Keys& asked, const Entries& found, std::uint64_t erasuresBefore);
  bool needsDisk();
  bool needsDiskLocked() const;
  void beginExit() noexcept override;
  /// The queue waits for its file lane.
  void awaitExit(std::chrono::steady_clock::time_point /*deadline*/) noexcept override {}
};

// Under the mutex. Whether there is a file that cannot be used.
bool JsonFileStore::State::load() {
  if (isLoadTried) return false;
  const SmallFile read = file ? file->load() : SmallFile{SmallFile::Outcome::missing, {}};
  std::optional<Json> object = objectIn(read);
  const JsonDiscarder discarder(object);
  if (object) pending.entries = entriesOf(*object);
  isLoadTried = true;
  isLoaded = !isUnreadableForNow(read);
  return !object;
}

// Under the mutex. What memory had before says nothing of the file, which others write too. Without
// memory at most a key is written again whose text is the same.
void JsonFileStore::State::change(std::string_view key, std::string_view text) {
  StoredEntry entry = {StoredEntry::Kind::text, std::string(text)};
  if (file) pending.unwritten.emplace(key);
  pending.entries.insert_or_assign(std::string(key), std::move(entry));
  const auto found = pending.defaults.find(key);
  if (found != pending.defaults.end()) pending.defaults.erase(found);
}

// Under the mutex.
void JsonFileStore::State::changeToDefault(std::string_view key, std::string_view text) {
  if (pending.entries.contains(key)) return;
  StoredEntry entry = {StoredEntry::Kind::text, std::string(text)};
  if (file) {
    pending.defaults.emplace(key);
    pending.unwritten.emplace(key);
  }
  pending.entries.emplace(key, std::move(entry));
}

// What waits while collection is off is written with the first use that finds it on.
void JsonFileStore::State::flush() {
  Pending taken;
  const char* problem = "it needs more memory than there is";
  hasMemoryFor([&] {
    problem = eraseIfDue();
    if (problem != nullptr || !isCollectionEnabled()) return;
    problem = "it needs more memory than there is";
    bool isKnown = false;
    std::uint64_t erasuresBefore = 0;
    {
      const std::lock_guard lock(mutex);
      erasuresBefore = erasures;
      isKnown = isLoaded;
      taken.entries = pending.entries;
      taken.defaults = pending.defaults;
      taken.unwritten.swap(pending.unwritten);
      isFlushing = true;
    }
    Entries found;
    problem = nullptr;
    if (!taken.unwritten.empty()) {
      problem = file->merge(taken, found);
    } else if (!isKnown) {
      problem = file->look(found);
    }
    if (problem == nullptr) adopt(taken.defaults, found, erasuresBefore);
  });
  {
    const std::lock_guard lock(mutex);
    if (problem != nullptr) {
      // What was forgotten since waits no more. Needs no memory.
      std::erase_if(taken.unwritten,
                    [&](const std::string& key) { return !pending.entries.contains(key); });
      pending.unwritten.merge(taken.unwritten);
    }
    isFlushing = false;
  }
  if (problem == nullptr) return;
  sayOfState(file->path(), problem);
}

// Under the mutex.
void JsonFileStore::State::forget() {
  pending = Pending();
  isLoadTried = true;
  isLoaded = true;
  isErasureDue = file.has_value();
  ++erasures;
}

// The file lane. Null, or in words why it is still due, as it is where memory runs out.
const char* JsonFileStore::State::eraseIfDue() {
  std::uint64_t erased = 0;
  {
    const std::lock_guard lock(mutex);
    if (!isErasureDue) return nullptr;
    erased = erasures;
  }
  if (const char* const problem = file->erase()) return problem;
  const std::lock_guard lock(mutex);
  // One that was asked for meanwhile is done by the flush that it has asked for.
  if (erased == erasures) isErasureDue = false;
  return nullptr;
}

// What the host has written since is no default any more.
void JsonFileStore::State::adopt(const Keys& asked, const Entries& found,
                                 std::uint64_t erasuresBefore) {
  const std::lock_guard lock(mutex);
  if (erasures != erasuresBefore) return;
  for (const auto& [key, entry] : found) {
    const bool isYielding = asked.contains(key) && pending.defaults.contains(key);
    const bool isNews = !isLoaded && !pending.entries.contains(key);
    if (isYielding || isNews) pending.entries.insert_or_assign(key, entry);
  }
  for (const std::string& key : asked) pending.defaults.erase(key);
  isLoaded = true;
}

// A file that could not be read is looked at again whenever the state is used, by the file lane.
bool JsonFileStore::State::needsDisk() {
  const std::lock_guard lock(mutex);
  return needsDiskLocked();
}

// Under the mutex.
bool JsonFileStore::State::needsDiskLocked() const {
  if (isErasureDue) return true;
  return file && isCollectionEnabled() &&
         (!pending.unwritten.empty() || (isLoadTried && !isLoaded));
}

// What could not be written is tried once more. The mutex is held where a first use reads a disk
// that may not answer.
void JsonFileStore::State::beginExit() noexcept {
  const std::unique_lock lock(mutex, std::try_to_lock);
  if (lock && needsDiskLocked()) flushTask->start(shared_from_this());
}

JsonFileStore::JsonFileStore(std::optional<std::string> folder,
                             std::shared_ptr<BackgroundQueue> queue)
    : state_(std::make_shared<State>(std::move(folder))), queue_(std::move(queue)) {
  state_->flushTask = queue_->prepare(
      WorkLane::files, [state = state_.get()](const PreparedTask::Owner&) { state->flush(); });
  if (!state_->flushTask) throw std::bad_alloc();
  joinProcessExit(state_);
}

// What could not be written is tried once more.
JsonFileStore::~JsonFileStore() {
  if (!leakInForkedChild(state_)) askForDisk();
}

void JsonFileStore::load() {
  bool isUnusable = false;
  {
    const std::lock_guard lock(state_->mutex);
    isUnusable = state_->load();
  }
  if (isUnusable) sayOfState(state_->file->path(), "cannot be used, nothing is known");
}

StoredEntry JsonFileStore::read(std::string_view key) {
  load();
  StoredEntry entry;
  bool isLoaded = false;
  {
    const std::lock_guard lock(state_->mutex);
    const auto found = state_->pending.entries.find(key);
    if (found != state_->pending.entries.end()) entry = found->second;
    isLoaded = state_->isLoaded;
  }
  if (!isLoaded) askForDisk();
  return entry;
}

void JsonFileStore::write(std::string_view key, std::string_view text) {
  load();
  {
    const std::lock_guard lock(state_->mutex);
    state_->change(key, text);
  }
  askForDisk();
}

void JsonFileStore::writeDefault(std::string_view key, std::string_view text) {
  load();
  {
    const std::lock_guard lock(state_->mutex);
    state_->changeToDefault(key, text);
  }
  askForDisk();
}

bool JsonFileStore::forget() {
  {
    const std::lock_guard lock(state_->mutex);
    state_->forget();
  }
  askForDisk();
  return true;
}

bool JsonFileStore::isForgotten() {
  const std::lock_guard lock(state_->mutex);
  return !state_->isErasureDue;
}

void JsonFileStore::synchronize() { askForDisk(); }

bool JsonFileStore::isSynchronized() {
  const std::lock_guard lock(state_->mutex);
  // While collection is off nothing is stored, and nothing waits for it.
  const bool isUnwritten = !state_->pending.unwritten.empty() && isCollectionEnabled();
  return !isUnwritten && !state_->isFlushing && !state_->isErasureDue;
}

void JsonFileStore::askForDisk() {
  if (state_->needsDisk()) state_->flushTask->start(state_);
}

}  // namespace quorvance
