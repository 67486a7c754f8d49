#pragma once

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <utility>

#include "quorvance/platform/documents.h"

namespace quorvance {

/// Another folder, whose writes a test can wait for. It does not say where it is:
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
    const std::lock_guard lock(mutex_);
    ++writes_;
    written_.notify_all();
    return error;
  }
  std::optional<PlatformError> rename(const std::string& from, const std::string& to) override {
    return inner_->rename(from, to);
  }
  std::optional<PlatformError> remove(const std::string& name) override {
    return inner_->remove(name);
  }
  std::unique_ptr<DocumentsLock> lockAmongProcesses(std::string_view purpose,
                                                    std::chrono::milliseconds timeout) override {
    return inner_->lockAmongProcesses(purpose, timeout);
  }
  std::vector<UnfinishedDocument> unfinishedDocuments() override {
    return inner_->unfinishedDocuments();
  }

  /// As many as there were when the count is reached or the timeout comes.
  std::size_t waitForWrites(std::size_t wanted, std::chrono::seconds timeout) {
    std::unique_lock lock(mutex_);
    written_.wait_for(lock, timeout, [&] { return writes_ >= wanted; });
    return writes_;
  }

 private:
  const std::shared_ptr<DocumentsFolder> inner_;
  std::mutex mutex_;
  std::condition_variable written_;
  std::size_t writes_ = 0;
};

}  // namespace quorvance
