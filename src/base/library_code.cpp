#include "base/library_code.h"

namespace quorvance {
namespace {

// In the block that every thread has from its start: the usual model may want memory on first use,
// and ends the process without it.
[[gnu::tls_model("initial-exec")]] thread_local int libraryCodeDepth = 0;

}  // namespace

LibraryCode::LibraryCode() noexcept { ++libraryCodeDepth; }

LibraryCode::~LibraryCode() { --libraryCodeDepth; }

bool isInLibraryCode() noexcept { return libraryCodeDepth > 0; }

}  // namespace quorvance
