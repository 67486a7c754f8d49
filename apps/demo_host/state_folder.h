// The folder in which the library keeps its state during one run.
#pragma once

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>

#include "quorvance/platform/queues.h"

namespace demo_host {

// How long the library's last writes are waited for.
inline constexpr std::chrono::seconds kLastWritesTime{2};

// The given folder, or one of its own that is removed with it.
class StateFolder {
 public:
  // Throws RunError.
  explicit StateFolder(const std::optional<std::filesystem::path>& given);
  // Waits for what the queue has to write, since the library would make a removed folder again.
  ~StateFolder();
  StateFolder(const StateFolder&) = delete;
  StateFolder& operator=(const StateFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }
  // The queue of the platform that writes here.
  void isWrittenBy(std::shared_ptr<quorvance::BackgroundQueue> queue);

 private:
  void waitForWrites() const;

  std::filesystem::path path_;
  bool isOwn_ = false;
  std::shared_ptr<quorvance::BackgroundQueue> queue_;
};

}  // namespace demo_host
