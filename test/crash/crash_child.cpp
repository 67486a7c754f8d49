// crash_child DEATH CIRCUMSTANCES FOLDER NOTES: dies in the way and the circumstances that are
// named. FOLDER is where the library keeps its reports, NOTES the file that this program notes its
// end in. Ends with status 0 only when it is one that survives.

#include <signal.h>
#include <sys/resource.h>

#include <cstdlib>

#include "test/crash/crash_kinds.h"

int main(int argc, char** argv) {
  if (argc != 5) return EXIT_FAILURE;
  const quorvance::Death die = quorvance::deaths().at(argv[1]);
  const quorvance::Circumstances prepare = quorvance::circumstances().at(argv[2]);
  const rlimit noCore = {0, 0};
  setrlimit(RLIMIT_CORE, &noCore);
  signal(SIGPIPE, SIG_DFL);  // whatever was inherited
  // Never destroyed: the process dies in its midst.
  prepare(*new quorvance::CrashChildWorld(argv[3], argv[4]), die);
  std::_Exit(EXIT_SUCCESS);
}
