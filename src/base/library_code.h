#pragma once

namespace quorvance {

/// Marks the calling thread, while the object lives, as one that runs code of the library's: a
/// thread of its own, or any thread inside a call of the host's code.
class LibraryCode {
 public:
  LibraryCode() noexcept;
  ~LibraryCode();
  LibraryCode(const LibraryCode&) = delete;
  LibraryCode& operator=(const LibraryCode&) = delete;
};

/// Whether the calling thread is so marked: who waits there for the library waits for himself.
bool isInLibraryCode() noexcept;

}  // namespace quorvance
