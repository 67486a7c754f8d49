#include "base/debug_output.h"

#include <array>
#include <cstdio>
#include <new>
#include <utility>

#include "base/console.h"
#include "base/debug.h"
#include "base/forked_child.h"
#include "base/out_of_memory.h"

namespace quorvance {
namespace {

constexpr std::chrono::seconds kWriterIdleTime{1};

// What the host's sink makes the library print would come back to it for ever.
thread_local bool isInSink = false;

/// `text` ends in its line end.
void writeLine(const LogSink* sink, LogLevel level, std::string_view text) noexcept {
  if (sink == nullptr) return writeToConsole(text);
  text.remove_suffix(1);
  isInSink = true;
  try {
    (*sink)(level, text);
  } catch (...) {  // NOLINT(bugprone-empty-catch): a line is not worth the process
  }
  isInSink = false;
}

void writeDropped(const LogSink* sink, std::size_t count) noexcept {
  std::array<char, 64> text = {};
  const int length = std::snprintf(text.data(), text.size(), "... %zu lines dropped\n", count);
  writeLine(sink, LogLevel::warning, {text.data(), static_cast<std::size_t>(length)});
}

}  // namespace

DebugOutput& DebugOutput::ofProcess() {
  // Needs no memory: there may be none.
  alignas(DebugOutput) static std::array<std::byte, sizeof(DebugOutput)> memory;
  static auto* const output = new (memory.data()) DebugOutput();
  return *output;
}

void DebugOutput::setSink(std::shared_ptr<const LogSink> sink) noexcept {
  const std::lock_guard lock(mutex_);
  sink_.swap(sink);  // the former one goes after the lock
}

bool DebugOutput::hasSink() noexcept {
  const std::lock_guard lock(mutex_);
  return sink_ != nullptr;
}

void DebugOutput::add(std::string_view line, LogLevel level) noexcept {
  if (isInSink) return;
  std::list<Line> taken;
  const bool hasMemory = hasMemoryFor([&] {
    taken.emplace_back();
    taken.front().text.reserve(line.size() + 1);
    taken.front().text.append(line).push_back('\n');
    taken.front().level = level;
  });
  const std::lock_guard lock(mutex_);
  if (hasMemory && hasRoomFor(taken.front())) {
    taken.front().droppedBefore = std::exchange(dropped_, 0);
    waitingBytes_ += taken.front().text.size();
    waiting_.splice(waiting_.end(), taken);
  } else {
    ++dropped_;
  }
  ensureWriter();
  changed_.notify_all();
}

// Under the mutex.
bool DebugOutput::hasRoomFor(const Line& line) const {
  return waiting_.size() < kMaxWaitingDebugLines &&
         line.text.size() <= kMaxWaitingDebugBytes - waitingBytes_;
}

// Under the mutex.
void DebugOutput::ensureWriter() noexcept {
  if (!isWriterAlive_) {
    isWriterAlive_ = startConsoleThread([] { DebugOutput::ofProcess().runWriter(); });
  }
}

void DebugOutput::runWriter() noexcept {
  std::unique_lock lock(mutex_);
  for (;;) {
    if (writeNext(lock)) continue;
    const bool isWoken =
        changed_.wait_for(lock, kWriterIdleTime, [&] { return !waiting_.empty() || dropped_ > 0; });
    if (!isWoken) break;
  }
  isWriterAlive_ = false;
}

// Under the mutex, which is released meanwhile. False when nothing waits.
bool DebugOutput::writeNext(std::unique_lock<std::mutex>& lock) noexcept {
  std::list<Line> line;
  std::size_t dropped = 0;
  if (!waiting_.empty()) {
    line.splice(line.begin(), waiting_, waiting_.begin());
    dropped = line.front().droppedBefore;
    waitingBytes_ -= line.front().text.size();
  } else {
    dropped = std::exchange(dropped_, 0);
    if (dropped == 0) return false;
  }
  isWriting_ = true;
  std::shared_ptr<const LogSink> sink = sink_;
  lock.unlock();
  if (dropped > 0) writeDropped(sink.get(), dropped);
  if (!line.empty()) writeLine(sink.get(), line.front().level, line.front().text);
  line.clear();
  sink.reset();  // not under the lock: it may be the last to hold it
  lock.lock();
  isWriting_ = false;
  changed_.notify_all();
  return true;
}

bool DebugOutput::flush(std::chrono::steady_clock::time_point deadline) noexcept {
  if (isForkedChild()) return true;
  std::unique_lock lock(mutex_);
  const auto isAllWritten = [&] { return waiting_.empty() && dropped_ == 0 && !isWriting_; };
  if (!isAllWritten()) ensureWriter();
  return changed_.wait_until(lock, isWriterAlive_ ? deadline : decltype(deadline)(), isAllWritten);
}

}  // namespace quorvance
