#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "quorvance/log.h"

namespace quorvance {

/// The lines on their way to the console, or to the host's sink. Any thread, guarded by one mutex,
/// which is never held while a line is written.
///
/// Lines are written by a thread that exists while some wait and for a moment after the last; when
/// the system gives none, the next line tries again. They keep their order. A line for which there
/// is no room or no memory is dropped and counted; the count is written where the lines would be.
class DebugOutput {
 public:
  /// Nothing on the thread that is in a sink.
  void add(std::string_view line, LogLevel level) noexcept;
  /// Null: the console.
  void setSink(std::shared_ptr<const LogSink> sink) noexcept;
  bool hasSink() noexcept;
  bool flush(std::chrono::steady_clock::time_point deadline) noexcept;

  /// The process's own; never destroyed.
  static DebugOutput& ofProcess();

 private:
  struct Line {
    std::string text;
    LogLevel level = LogLevel::debug;
    std::size_t droppedBefore = 0;
  };

  bool hasRoomFor(const Line& line) const;
  void ensureWriter() noexcept;
  void runWriter() noexcept;
  bool writeNext(std::unique_lock<std::mutex>& lock) noexcept;

  std::mutex mutex_;
  std::condition_variable changed_;
  std::shared_ptr<const LogSink> sink_;
  std::list<Line> waiting_;
  std::size_t waitingBytes_ = 0;
  /// Since the last line that was taken.
  std::size_t dropped_ = 0;
  bool isWriterAlive_ = false;
  bool isWriting_ = false;
};

}  // namespace quorvance
