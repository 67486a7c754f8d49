#include "base/fatal.h"

#include <cstdio>
#include <cstdlib>

namespace quorvance {

void fatalError(std::string_view violation) noexcept {
  std::fprintf(stderr, "QuorvanceSDK: fatal: %.*s\n", static_cast<int>(violation.size()),
               violation.data());
  std::abort();
}

}  // namespace quorvance
