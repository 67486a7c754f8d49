#include "base/console.h"

#include <errno.h>
#include <poll.h>
#include <unistd.h>

#include "platform/linux/threads/library_thread.h"

namespace quorvance {

// Not through the C library's stream: its lock would hold up the host's own output.
void writeToConsole(std::string_view text) noexcept {
  while (!text.empty()) {
    const ssize_t written = write(STDOUT_FILENO, text.data(), text.size());
    if (written >= 0) {
      text.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno == EAGAIN) {
      pollfd console = {STDOUT_FILENO, POLLOUT, 0};
      poll(&console, 1, -1);
    } else if (errno != EINTR) {
      return;
    }
  }
}

bool startConsoleThread(void (*body)()) noexcept {
  LibraryThread thread;
  const bool isStarted = thread.start("qv-debug", body);
  thread.detach();
  return isStarted;
}

}  // namespace quorvance
