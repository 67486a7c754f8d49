// crash_child KIND FOLDER NOTES: dies in the way that KIND names, with crash capture on. FOLDER is
// where the library keeps its reports, NOTES the file that this program notes its end in. Ends with
// status 0 only when the kind is one that survives.

#include <sys/resource.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "test/crash/crash_kinds.h"

namespace {

quorvance::CrashKind kindOf(const std::string& name) {
  for (const auto* kinds : {&quorvance::crashKinds(), &quorvance::heapCrashKinds()}) {
    const auto found = kinds->find(name);
    if (found != kinds->end()) return found->second;
  }
  return nullptr;
}

}  // namespace

int main(int argc, char** argv) {
  const quorvance::CrashKind kind = argc == 4 ? kindOf(argv[1]) : nullptr;
  if (kind == nullptr) {
    std::fputs("usage: crash_child KIND FOLDER NOTES\n", stderr);
    return EXIT_FAILURE;
  }
  const rlimit noCore = {0, 0};
  setrlimit(RLIMIT_CORE, &noCore);
  // Never destroyed: the process dies in its midst.
  auto* const world = new quorvance::CrashChildWorld(argv[2], argv[3]);
  kind(*world);
  std::_Exit(EXIT_SUCCESS);
}
