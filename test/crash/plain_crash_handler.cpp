// What a handler costs that does nothing but the writes: the measure for the library's own.

#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <unistd.h>

#include <array>

#include "test/crash/crash_kinds.h"

namespace quorvance {
namespace {

// As long as an ordinary report.
constexpr std::size_t kPlainReportBytes = 1200;

int plainFolder = -1;
std::array<char, kPlainReportBytes> plainReport{};

int replacePlainReport() {
  const int file =
      openat(plainFolder, ".report-plain", O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  const bool isWritten = write(file, plainReport.data(), plainReport.size()) > 0;
  if (isWritten) renameat(plainFolder, ".report-plain", plainFolder, "crash-plain.json");
  return file;
}

void writePlainReport(int /*number*/) {
  close(replacePlainReport());
  fdatasync(replacePlainReport());
  fsync(plainFolder);
  kill(getpid(), SIGKILL);
}

}  // namespace

void dieWithPlainHandler(CrashChildWorld& world, Death die) {
  plainReport.fill(' ');
  plainFolder = open(world.folder().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  signal(SIGSEGV, &writePlainReport);
  world.noteFault();
  die();
}

}  // namespace quorvance
