#include "platform/linux/storage/json_file_store.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <mutex>
#include <new>
#include <set>
#include <utility>

#include "base/debug.h"
#include "base/json.h"
#include "base/out_of_memory.h"
#include "platform/linux/storage/file_lock.h"
#include "platform/linux/storage/private_files.h"

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

/// Whether to set the file aside. One that cannot be read now may be readable the next time.
bool isSpoilt(const SmallFile& file) {
  return file.outcome == SmallFile::Outcome::whole || file.outcome == SmallFile::Outcome::tooLong;
}

}  // namespace

/// The disk side of a store; the file lane only, save for load().
class JsonFileStore::StateFile {
 public:
  explicit StateFile(std::string folder)
      : folder_(std::move(folder)), path_(folder_ + "/state.json") {}

  const std::string& path() const { return path_; }
  SmallFile load() const { return readSmallFile(path_, kMaxFileBytes); }
  /// Makes the file hold the texts of `keys`, or every text when it is missing or set aside.
  /// Returns null, or in words what went wrong.
  const char* merge(const Keys& keys, const Entries& entries);

 private:
  void put(Json& object, const std::string& key, const StoredEntry& entry) const;
  void drop(Json& object, const std::string& key) const;

  const std::string folder_;
  const std::string path_;
  // The last wait for the lock was in vain: until it is free again, none is made.
  bool isLockStalled_ = false;
};

const char* JsonFileStore::StateFile::merge(const Keys& keys, const Entries& entries) {
  if (!makePrivateFolder(folder_)) return "its folder cannot be made";
  const FileLock lock(folder_ + "/state.lock", isLockStalled_ ? kMaxLockWait.zero() : kMaxLockWait);
  isLockStalled_ = lock.outcome() == FileLock::Outcome::heldElsewhere;
  if (lock.outcome() != FileLock::Outcome::held) return "it cannot be locked";
  const SmallFile file = load();
  std::optional<Json> object = objectIn(file);
  const JsonDiscarder discarder(object);
  const bool isNew = !object || file.outcome == SmallFile::Outcome::missing;
  if (!object) {
    if (!isSpoilt(file)) return "it cannot be read";
    std::rename(path_.c_str(), (folder_ + "/unreadable-state.json").c_str());
    object = Json::object();
  }
  for (const auto& [key, entry] : entries) {
    if (isNew || keys.contains(key)) put(*object, key, entry);
  }
  std::optional<std::string> bytes = writeJson(*object);
  if (!bytes || bytes->size() > kMaxFileBytes) {
    for (const std::string& key : keys) drop(*object, key);
    bytes = writeJson(*object);
  }
  if (!bytes) return "it cannot be JSON";
  if (*bytes == file.bytes) return nullptr;
  const bool isReplaced = replaceFile(path_, folder_ + "/state.tmp", *bytes);
  return isReplaced ? nullptr : "it cannot be written";
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

struct JsonFileStore::State {
  explicit State(std::optional<std::string> folder) {
    if (folder) file.emplace(std::move(*folder));
  }

  std::optional<StateFile> file;
  std::mutex mutex;
  bool isLoaded = false;
  Entries entries;
  // Those whose texts the disk may not have.
  Keys unwritten;
  // Flushes on the file lane. Made beforehand: asking for it needs no memory.
  std::shared_ptr<PreparedTask> flushTask;

  bool load();
  void change(std::string_view key, std::string_view text);
  void flush();
};

// Under the mutex. Whether there is a file that cannot be used.
bool JsonFileStore::State::load() {
  if (isLoaded) return false;
  std::optional<Json> object = file ? objectIn(file->load()) : Json::object();
  const JsonDiscarder discarder(object);
  if (object) entries = entriesOf(*object);
  isLoaded = true;
  return !object;
}

// Under the mutex. What memory had before says nothing of the file, which others write too. Without
// memory at most a key is written again whose text is the same.
void JsonFileStore::State::change(std::string_view key, std::string_view text) {
  StoredEntry entry = {StoredEntry::Kind::text, std::string(text)};
  if (file) unwritten.emplace(key);
  entries.insert_or_assign(std::string(key), std::move(entry));
}

void JsonFileStore::State::flush() {
  Keys keys;
  const char* problem = "it needs more memory than there is";
  hasMemoryFor([&] {
    Entries known;
    {
      const std::lock_guard lock(mutex);
      known = entries;
      keys.swap(unwritten);
    }
    problem = keys.empty() ? nullptr : file->merge(keys, known);
  });
  if (problem == nullptr) return;
  {
    const std::lock_guard lock(mutex);
    unwritten.merge(keys);
  }
  sayOfState(file->path(), problem);
}

JsonFileStore::JsonFileStore(std::optional<std::string> folder,
                             std::shared_ptr<BackgroundQueue> queue)
    : state_(std::make_shared<State>(std::move(folder))), queue_(std::move(queue)) {
  state_->flushTask = queue_->prepare(
      WorkLane::files, [state = state_.get()](const PreparedTask::Owner&) { state->flush(); });
  if (!state_->flushTask) throw std::bad_alloc();
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
  const std::lock_guard lock(state_->mutex);
  const auto found = state_->entries.find(key);
  return found == state_->entries.end() ? StoredEntry() : found->second;
}

void JsonFileStore::write(std::string_view key, std::string_view text) {
  load();
  {
    const std::lock_guard lock(state_->mutex);
    state_->change(key, text);
  }
  askForDisk();
}

void JsonFileStore::synchronize() { askForDisk(); }

void JsonFileStore::askForDisk() {
  {
    const std::lock_guard lock(state_->mutex);
    if (state_->unwritten.empty()) return;
  }
  state_->flushTask->start(state_);
}

}  // namespace quorvance
