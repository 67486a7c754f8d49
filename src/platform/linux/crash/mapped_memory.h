#pragma once

#include <cstddef>
#include <span>

namespace quorvance {

/// Zeroed memory that no heap knows of; empty when the system gives none.
class MappedMemory {
 public:
  explicit MappedMemory(std::size_t bytes);
  ~MappedMemory();
  MappedMemory(const MappedMemory&) = delete;
  MappedMemory& operator=(const MappedMemory&) = delete;

  std::span<char> span() const { return memory_; }

 private:
  std::span<char> memory_;
};

}  // namespace quorvance
