#include "platform/testing/memory_documents.h"

#include <algorithm>
#include <utility>

namespace quorvance {

namespace {

using Purposes = std::set<std::string, std::less<>>;

class MemoryLock : public DocumentsLock {
 public:
  MemoryLock(std::shared_ptr<Purposes> locked, Purposes::iterator purpose)
      : locked_(std::move(locked)), purpose_(purpose) {}
  ~MemoryLock() override { locked_->erase(purpose_); }
  MemoryLock(const MemoryLock&) = delete;
  MemoryLock& operator=(const MemoryLock&) = delete;

 private:
  const std::shared_ptr<Purposes> locked_;
  const Purposes::iterator purpose_;
};

}  // namespace

bool MemoryDocuments::prepare() { return isAvailable; }

std::optional<PlatformError> MemoryDocuments::list(std::vector<DocumentEntry>& entries) {
  ++reads;
  if (listError) return listError;
  for (const auto& file : files) {
    if (!file.first.starts_with('.')) entries.push_back({file.first, changedAt_[file.first]});
  }
  return std::nullopt;
}

DocumentRead MemoryDocuments::read(const std::string& name, std::string& bytes) {
  ++reads;
  if (readError) return {DocumentRead::Kind::failed, readError};
  if (std::find(oddNames.begin(), oddNames.end(), name) != oddNames.end()) {
    return {DocumentRead::Kind::unreadable, std::nullopt};
  }
  bytes = files.at(name);
  return {};
}

std::optional<PlatformError> MemoryDocuments::write(const std::string& name,
                                                    std::string_view bytes) {
  if (writeError) return writeError;
  files[name] = bytes;
  changedAt_[name] = ++changes_;
  return std::nullopt;
}

std::optional<PlatformError> MemoryDocuments::rename(const std::string& from,
                                                     const std::string& to) {
  files[to] = files.at(from);
  files.erase(from);
  changedAt_[to] = ++changes_;
  return std::nullopt;
}

std::optional<PlatformError> MemoryDocuments::remove(const std::string& name) {
  if (removeError) return removeError;
  files.erase(name);
  return std::nullopt;
}

std::unique_ptr<DocumentsLock> MemoryDocuments::lockAmongProcesses(
    std::string_view purpose, std::chrono::milliseconds /*timeout*/) {
  if (lockedElsewhere.contains(purpose)) return nullptr;
  const auto [added, isNew] = locked_->emplace(purpose);
  if (!isNew) return nullptr;
  return std::make_unique<MemoryLock>(locked_, added);
}

std::vector<UnfinishedDocument> MemoryDocuments::unfinishedDocuments() {
  std::vector<UnfinishedDocument> present;
  for (const UnfinishedDocument& one : unfinished) {
    if (files.contains(one.temporaryName)) present.push_back(one);
  }
  return present;
}

std::size_t MemoryDocuments::count(std::string_view prefix) const {
  return static_cast<std::size_t>(std::count_if(files.begin(), files.end(), [&](const auto& file) {
    return file.first.starts_with(prefix);
  }));
}

}  // namespace quorvance
