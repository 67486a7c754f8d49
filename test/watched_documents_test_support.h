#pragma once

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <utility>

#include "quorvance/platform/documents.h"

namespace quorvance {

/// Another folder, whose writes and removals a test can wait for. It does not say where it is:
/// hosts have such folders.
class WatchedDocuments : public DocumentsFolder {
 public:
  explicit WatchedDocuments(std::shared_ptr<DocumentsFolder> inner) : inner_(std::move(inner)) {}

  bool prepare() override { return inner_->prepare(); }
  std::optional<PlatformError> list(std::vector<DocumentEntry>& entries) override {
    return inner_->list(entries);
  }
  DocumentRead read(const std::string& name, std::string& bytes) override {
    return inner_->read(name, bytes);
  }
  std::optional<PlatformError> write(const std::string& name, std::string_view bytes) override {
    auto error = inner_->write(name, bytes);
    count(writes_);
    return error;
  }
  std::optional<PlatformError> rename(const std::string& from, const std::string& to) override {
    return inner_->rename(from, to);
  }
  std::optional<PlatformError> remove(const std::string& name) override {
    auto error = inner_->remove(name);
    count(removals_);
    return error;
  }
  std::unique_ptr<DocumentsLock> lockAmongProcesses(std::string_view purpose,
                                                    std::chrono::milliseconds timeout) override {
    return inner_->lockAmongProcesses(purpose, timeout);
  }
  std::vector<UnfinishedDocument> unfinishedDocuments() override {
    return inner_->unfinishedDocuments();
  }

  /// As many as there were when the count is reached or patience ends.
  std::size_t waitForWrites(std::size_t wanted, std::chrono::seconds patience) {
    return wait(writes_, wanted, patience);
  }
  std::size_t waitForRemovals(std::size_t wanted, std::chrono::seconds patience) {
    return wait(removals_, wanted, patience);
  }

 private:
  void count(std::size_t& counter) {
    const std::lock_guard lock(mutex_);
    ++counter;
    changed_.notify_all();
  }
  std::size_t wait(std::size_t& counter, std::size_t wanted, std::chrono::seconds patience) {
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, patience, [&] { return counter >= wanted; });
    return counter;
  }

  const std::shared_ptr<DocumentsFolder> inner_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::size_t writes_ = 0;
  std::size_t removals_ = 0;
};

}  // namespace quorvance
