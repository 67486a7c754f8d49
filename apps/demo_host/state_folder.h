// The folder in which the library keeps its state during one run.
#pragma once

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>

#include "apps/demo_host/temporary_path.h"
#include "quorvance/platform/queues.h"

namespace demo_host {

// How long the library's last writes are waited for.
inline constexpr std::chrono::seconds kLastWritesTime{2};

// Throws InputError, which says why, when the library could not keep anything there. Makes the
// folder where it is missing.
void checkStateFolder(const std::filesystem::path& folder);

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

  std::optional<TemporaryPath> own_;
  std::filesystem::path path_;
  std::shared_ptr<quorvance::BackgroundQueue> queue_;
};

}  // namespace demo_host
