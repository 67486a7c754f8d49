#include "apps/demo_host/demo_stay.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>

extern char** environ;  // NOLINT: POSIX declares it nowhere

namespace demo_host {
namespace {

// Any key, not only the one at the end of a line. Life: set by the constructor when standard input
// is a terminal, put back by the destructor.
class KeyInput {
 public:
  KeyInput() : isTerminal_(tcgetattr(STDIN_FILENO, &before_) == 0) {
    if (!isTerminal_) return;
    termios raw = before_;
    raw.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
    tcsetattr(STDIN_FILENO, TCSANOW, &raw);
  }
  ~KeyInput() {
    if (isTerminal_) tcsetattr(STDIN_FILENO, TCSAFLUSH, &before_);
  }
  KeyInput(const KeyInput&) = delete;
  KeyInput& operator=(const KeyInput&) = delete;

  // For poll(), which passes over a descriptor below 0.
  int descriptor() const { return isTerminal_ ? STDIN_FILENO : -1; }

 private:
  termios before_{};
  const bool isTerminal_;
};

}  // namespace

void waitForKeyOrSignal() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&signals, signal);
  sigset_t before;
  pthread_sigmask(SIG_BLOCK, &signals, &before);
  const int descriptor = signalfd(-1, &signals, SFD_CLOEXEC);
  {
    const KeyInput keys;
    pollfd watched[] = {{descriptor, POLLIN, 0}, {keys.descriptor(), POLLIN, 0}};
    while (poll(watched, 2, -1) < 0 && errno == EINTR) {
    }
  }
  // The signal is taken here, so that the mask may go back without the process ending of it.
  signalfd_siginfo ignored{};
  if (fcntl(descriptor, F_SETFL, O_NONBLOCK) == 0) {
    (void)!read(descriptor, &ignored, sizeof ignored);
  }
  close(descriptor);
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

bool openInBrowser(const std::string& url) {
  std::string program = "xdg-open";
  std::string argument = url;
  char* const command[] = {program.data(), argument.data(), nullptr};
  pid_t child = -1;
  if (posix_spawnp(&child, program.c_str(), nullptr, nullptr, command, environ) != 0) return false;
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

}  // namespace demo_host
