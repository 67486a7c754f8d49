#include "platform/linux/crash/mapped_memory.h"

#include <sys/mman.h>

namespace quorvance {

MappedMemory::MappedMemory(std::size_t bytes) {
  void* const memory =
      mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory != MAP_FAILED) memory_ = {static_cast<char*>(memory), bytes};
}

MappedMemory::~MappedMemory() {
  if (!memory_.empty()) munmap(memory_.data(), memory_.size());
}

}  // namespace quorvance
