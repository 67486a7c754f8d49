#pragma once

#include <map>
#include <string>

#include "test/crash/crash_child_world.h"

namespace quorvance {

/// Does to this process what the kind is named for; most do not return.
using CrashKind = void (*)(CrashChildWorld& world);

/// Dies without the library, in a handler of its own that makes the same writes.
void crashWithPlainHandler(CrashChildWorld& world);

/// All but those of the heap.
const std::map<std::string, CrashKind>& crashKinds();
/// Those that damage the C library's heap.
const std::map<std::string, CrashKind>& heapCrashKinds();

}  // namespace quorvance
