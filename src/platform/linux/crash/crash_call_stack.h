#pragma once

#include <sys/types.h>

#include <array>
#include <cstddef>
#include <string_view>

#include "platform/linux/crash/crash_text.h"
#include "platform/linux/crash/mapped_memory.h"
#include "platform/linux/storage/private_files.h"

namespace quorvance {

inline constexpr std::size_t kMaxCallStackFrames = 96;
/// Of the text, in memory; paths of modules are long, names in C++ too.
inline constexpr std::size_t kMaxCallStackBytes = 64UL * 1024;

/// The call stack of a dying thread, one symbol a line. Made in ordinary context, which also loads
/// the unwinder; the rest is async-signal-safe, except that finding symbols may wait for the
/// loader. Not thread-safe.
class CrashCallStack {
 public:
  CrashCallStack();

  /// Of the calling thread, innermost first. Frames before `top`, an instruction's address, are
  /// left out: those of the signal handler; without it, or when it is not among them, none are.
  void collect(const void* top = nullptr);
  /// Writes the addresses alone.
  void writeAddresses();
  /// Writes exported names, and module and offset for everything else; leaves the text as it is
  /// when there is no place to write them.
  void writeSymbols();
  std::string_view text() const { return text_.view(); }

 private:
  bool isOwnFile() const;

  std::array<void*, kMaxCallStackFrames> frames_{};
  int count_ = 0;
  MappedMemory memory_;
  CrashText text_;
  /// In memory: symbols can only be had through a descriptor.
  FileDescriptor symbols_;
  dev_t device_ = 0;
  ino_t inode_ = 0;
};

}  // namespace quorvance
