#pragma once

#include <map>
#include <string>

#include "test/crash/crash_child_world.h"

namespace quorvance {

/// Does to this process what it is named for; most do not return.
using Death = void (*)();

/// Brings about the death that is asked for in the circumstances that it is named for.
using Circumstances = void (*)(CrashChildWorld& world, Death die);

const std::map<std::string, Death>& deaths();
const std::map<std::string, Circumstances>& circumstances();

/// Dies without the library, in a handler of its own that makes the same writes.
void dieWithPlainHandler(CrashChildWorld& world, Death die);

}  // namespace quorvance
