#include "apps/demo_host/temporary_path.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "apps/demo_host/demo_errors.h"

namespace demo_host {
namespace {

// Between fork and exec: only what is safe after a fork. A session of its own, since Ctrl-C goes to
// every process of the terminal's.
[[noreturn]] void becomeHelper(char* const* command, int lifeline) {
  setsid();
  // Whoever reads what the demo prints waits for the demo alone.
  const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) dup2(nothing, stream);
  char byte = 0;
  while (read(lifeline, &byte, 1) < 0 && errno == EINTR) {
  }
  execv(command[0], command);
  _exit(1);
}

}  // namespace

TemporaryPath::TemporaryPath(Kind kind, const std::string& name) {
  std::error_code error;
  std::string path = std::filesystem::temp_directory_path(error) / name;
  if (!error && kind == Kind::folder && mkdtemp(path.data()) == nullptr) {
    error = std::error_code(errno, std::generic_category());
  } else if (!error && kind == Kind::file) {
    const int descriptor = mkostemp(path.data(), O_CLOEXEC);
    if (descriptor < 0) error = std::error_code(errno, std::generic_category());
    if (descriptor >= 0) close(descriptor);
  }
  if (error) throw RunError("nothing temporary can be made: " + error.message());
  path_ = path;
  startHelper();
}

// Without one the path is still removed at a usual end.
void TemporaryPath::startHelper() {
  std::string words[] = {"/bin/rm", "-rf", "--", path_.string()};
  char* const command[] = {words[0].data(), words[1].data(), words[2].data(), words[3].data(),
                           nullptr};
  int ends[2] = {-1, -1};
  if (pipe2(ends, O_CLOEXEC) != 0) return;
  helper_ = fork();
  if (helper_ == 0) {
    close(ends[1]);
    becomeHelper(command, ends[0]);
  }
  close(ends[0]);
  lifeline_ = ends[1];
}

TemporaryPath::~TemporaryPath() {
  std::error_code ignored;  // what is left lies among other temporary files
  std::filesystem::remove_all(path_, ignored);
  if (lifeline_ >= 0) close(lifeline_);
  while (helper_ > 0 && waitpid(helper_, nullptr, 0) < 0 && errno == EINTR) {
  }
}

}  // namespace demo_host
