#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <list>
#include <mutex>
#include <string>
#include <string_view>

namespace quorvance {

/// The lines on their way to the console. Any thread, guarded by one mutex.
///
/// Lines are written by a thread that exists while some wait and for a moment after the last; when
/// the system gives none, the next line tries again. They keep their order. A line for which there
/// is no room or no memory is dropped and counted; the count is written where the lines would be.
class DebugOutput {
 public:
  void add(std::string_view line) noexcept;
  bool flush(std::chrono::steady_clock::time_point deadline) noexcept;

  /// The process's own; never destroyed.
  static DebugOutput& ofProcess();

 private:
  struct Line {
    std::string text;
    std::size_t droppedBefore = 0;
  };

  bool hasRoomFor(const Line& line) const;
  void ensureWriter() noexcept;
  void runWriter() noexcept;
  bool writeNext(std::unique_lock<std::mutex>& lock) noexcept;

  std::mutex mutex_;
  std::condition_variable changed_;
  std::list<Line> waiting_;
  std::size_t waitingBytes_ = 0;
  /// Since the last line that was taken.
  std::size_t dropped_ = 0;
  bool isWriterAlive_ = false;
  bool isWriting_ = false;
};

}  // namespace quorvance
