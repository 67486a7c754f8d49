#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

#include "platform/testing/memory_documents.h"

namespace quorvance {

/// A folder in memory whose writes a test can wait for.
class SignallingDocuments : public MemoryDocuments {
 public:
  std::optional<PlatformError> write(const std::string& name, std::string_view bytes) override {
    const std::lock_guard lock(mutex_);
    ++writes_;
    written_.notify_all();
    return MemoryDocuments::write(name, bytes);
  }

  /// As many as there are when the count is reached or patience ends.
  std::size_t waitForWrites(std::size_t count, std::chrono::seconds patience) {
    std::unique_lock lock(mutex_);
    written_.wait_for(lock, patience, [&] { return writes_ >= count; });
    return writes_;
  }

 private:
  std::mutex mutex_;
  std::condition_variable written_;
  std::size_t writes_ = 0;
};

}  // namespace quorvance
