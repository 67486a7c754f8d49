#include "platform/linux/crash/crash_call_stack.h"

#include <execinfo.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>

namespace quorvance {

CrashCallStack::CrashCallStack()
    : memory_(kMaxCallStackBytes),
      text_(memory_.span()),
      symbols_(memfd_create("quorvance-call-stack", MFD_CLOEXEC)) {
  struct stat status = {};
  if (fstat(symbols_.number(), &status) == 0) {
    device_ = status.st_dev;
    inode_ = status.st_ino;
  }
  // The first use of both loads a library and takes memory.
  collect();
  writeSymbols();
  text_.clear();
}

void CrashCallStack::collect(const void* top) {
  count_ = backtrace(frames_.data(), static_cast<int>(frames_.size()));
  if (top == nullptr) return;
  auto* const end = frames_.data() + count_;
  auto* const first = std::find(frames_.data(), end, top);
  if (first == end) return;
  count_ = static_cast<int>(std::copy(first, end, frames_.data()) - frames_.data());
}

void CrashCallStack::writeAddresses() {
  text_.clear();
  for (int i = 0; i < count_; ++i) {
    if (i > 0) text_.append("\n");
    const void* const frame = frames_[static_cast<std::size_t>(i)];
    text_.appendHexadecimal(reinterpret_cast<std::uintptr_t>(frame));
  }
}

// A host may close descriptors that it does not know and get the same number again for a file of
// its own.
bool CrashCallStack::isOwnFile() const {
  struct stat status = {};
  return symbols_.isOpen() && fstat(symbols_.number(), &status) == 0 && status.st_dev == device_ &&
         status.st_ino == inode_;
}

void CrashCallStack::writeSymbols() {
  if (!isOwnFile() || ftruncate(symbols_.number(), 0) != 0) return;
  if (lseek(symbols_.number(), 0, SEEK_SET) != 0) return;
  backtrace_symbols_fd(frames_.data(), count_, symbols_.number());
  text_.clear();
  const std::span<char> memory = memory_.span();
  for (std::size_t size = 0; size < memory.size();) {
    const ssize_t count = pread(symbols_.number(), memory.data() + size, memory.size() - size,
                                static_cast<off_t>(size));
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) break;
    size += static_cast<std::size_t>(count);
    text_.resize(size);
  }
  if (text_.view().ends_with('\n')) text_.resize(text_.view().size() - 1);
}

}  // namespace quorvance
