#pragma once

#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "quorvance/platform/key_value_store.h"

namespace quorvance {

/// A key-value store in memory; it outlives the "process" of a test that keeps it.
class MemoryStore : public KeyValueStore {
 public:
  StoredEntry read(std::string_view key) override;
  void write(std::string_view key, std::string_view text) override;
  void synchronize() override;
  bool forget() override;

  /// Puts a value of another type under the key.
  void putOther(std::string key);
  std::map<std::string, StoredEntry> entries() const;
  /// The keys, in the order in which they were written.
  std::vector<std::string> writes() const;
  int synchronizations() const;

 private:
  mutable std::mutex mutex_;
  std::map<std::string, StoredEntry> entries_;
  std::vector<std::string> writes_;
  int synchronizations_ = 0;
};

}  // namespace quorvance
