#include "base/fatal.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>

#include "base/debug.h"

namespace quorvance {
namespace {

// The lines before the end tell what led to it; a console that takes none must not keep it.
constexpr std::chrono::milliseconds kMaxFlushTime{100};

}  // namespace

void fatalError(std::string_view violation) noexcept {
  std::fprintf(stderr, "QuorvanceSDK: fatal: %.*s\n", static_cast<int>(violation.size()),
               violation.data());
  flushDebugOutput(std::chrono::steady_clock::now() + kMaxFlushTime);
  std::abort();
}

}  // namespace quorvance
