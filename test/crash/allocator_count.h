#pragma once

#include "test/crash/crash_notes.h"

namespace quorvance {

/// From now on every call of the allocator on this thread is noted.
void countAllocatorCalls(CrashNotes& notes);

}  // namespace quorvance
