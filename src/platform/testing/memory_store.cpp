#include "platform/testing/memory_store.h"

namespace quorvance {

StoredEntry MemoryStore::read(std::string_view key) {
  const std::lock_guard lock(mutex_);
  const auto found = entries_.find(std::string(key));
  return found == entries_.end() ? StoredEntry{} : found->second;
}

void MemoryStore::write(std::string_view key, std::string_view text) {
  const std::lock_guard lock(mutex_);
  entries_[std::string(key)] = {StoredEntry::Kind::text, std::string(text)};
  writes_.emplace_back(key);
}

bool MemoryStore::forget() {
  const std::lock_guard lock(mutex_);
  entries_.clear();
  return true;
}

void MemoryStore::synchronize() {
  const std::lock_guard lock(mutex_);
  ++synchronizations_;
}

void MemoryStore::putOther(std::string key) {
  const std::lock_guard lock(mutex_);
  entries_[std::move(key)] = {StoredEntry::Kind::other, {}};
}

std::map<std::string, StoredEntry> MemoryStore::entries() const {
  const std::lock_guard lock(mutex_);
  return entries_;
}

std::vector<std::string> MemoryStore::writes() const {
  const std::lock_guard lock(mutex_);
  return writes_;
}

int MemoryStore::synchronizations() const {
  const std::lock_guard lock(mutex_);
  return synchronizations_;
}

}  // namespace quorvance
