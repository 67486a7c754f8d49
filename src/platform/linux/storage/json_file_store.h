#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "quorvance/platform/key_value_store.h"
#include "quorvance/platform/queues.h"

namespace quorvance {

/// The key-value state in one JSON file, "state.json" in the data folder.
///
/// The first use reads the file, on the caller's thread; from then on memory answers. One that
/// cannot be read for now is read again by the file lane with each further use, and what it holds
/// is known from then on. A write changes memory at once and asks the file lane to compare it with
/// the file, which other processes write too. There, under a file lock that they take as well
/// (where the file system has locks), the file is read again, the written keys alone are replaced,
/// and unless it has them already the whole takes the old one's place in one step; everything else
/// in it stays as it was found. A default is written only where its key is absent there; otherwise
/// memory takes the file's value, unless the host has written one meanwhile. A file that is missing
/// gets every text that memory has. What cannot be written is tried again with the next write, and
/// at the end of the store. A file that is no JSON object or too long, and whatever else has its
/// name, counts as empty; the first write sets it aside as "unreadable-state.json", with a number
/// where that name is taken by a folder. While collection is off memory alone is changed; what
/// waits is written with the first use after that. What is forgotten is removed from the disk
/// whatever the switch says: the file, its lock, temporaries, and those that were set aside. Any
/// thread; guarded by the state's mutex.
class JsonFileStore : public KeyValueStore {
 public:
  /// Longer files are not read.
  static constexpr std::size_t kMaxFileBytes = 1024 * 1024;
  /// Longer texts, and those that would make the file too long, stay in memory; their keys are
  /// removed from the file, which would otherwise bring an older text back.
  static constexpr std::size_t kMaxTextBytes = 64 * 1024;

  /// Without a folder everything stays in memory. `queue` must not be null.
  JsonFileStore(std::optional<std::string> folder, std::shared_ptr<BackgroundQueue> queue);
  ~JsonFileStore() override;
  JsonFileStore(const JsonFileStore&) = delete;
  JsonFileStore& operator=(const JsonFileStore&) = delete;

  StoredEntry read(std::string_view key) override;
  void write(std::string_view key, std::string_view text) override;
  void synchronize() override;
  void writeDefault(std::string_view key, std::string_view text) override;
  bool forget() override;
  bool isForgotten() override;
  bool isSynchronized() override;

 private:
  class StateFile;
  struct State;
  void load();
  void askForDisk();

  // Shared with the disk work that waits.
  const std::shared_ptr<State> state_;
  const std::shared_ptr<BackgroundQueue> queue_;
};

}  // namespace quorvance
