#include "base/random.h"

#include <sys/random.h>

#include <cerrno>
#include <cstddef>

#include "base/fatal.h"

namespace quorvance {

void fillWithRandomBytes(std::span<std::uint8_t> bytes) {
  std::size_t filled = 0;
  while (filled < bytes.size()) {
    const auto got = getrandom(bytes.data() + filled, bytes.size() - filled, 0);
    if (got > 0) {
      filled += static_cast<std::size_t>(got);
    } else if (errno != EINTR) {
      fatalError("the kernel gives no random bytes");
    }
  }
}

}  // namespace quorvance
