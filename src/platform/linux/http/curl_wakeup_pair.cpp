#include "platform/linux/http/curl_wakeup_pair.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/sockios.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <vector>

namespace quorvance {
namespace {

// A socket that follows all of these beats is the handle's.
constexpr int kBeats[] = {1, 3, 2};

struct ListingCloser {
  void operator()(DIR* directory) const { closedir(directory); }
};

bool isLocalStream(int descriptor) {
  int domain = 0;
  int type = 0;
  socklen_t length = sizeof domain;
  return getsockopt(descriptor, SOL_SOCKET, SO_DOMAIN, &domain, &length) == 0 &&
         domain == AF_UNIX && getsockopt(descriptor, SOL_SOCKET, SO_TYPE, &type, &length) == 0 &&
         type == SOCK_STREAM;
}

std::vector<int> localStreams() {
  std::vector<int> found;
  const std::unique_ptr<DIR, ListingCloser> directory(opendir("/proc/self/fd"));
  if (directory == nullptr) return found;
  while (const dirent* const entry = readdir(directory.get())) {
    const int descriptor = std::atoi(entry->d_name);
    if (isLocalStream(descriptor)) found.push_back(descriptor);
  }
  return found;
}

/// Bytes that wait here (FIONREAD), or that were sent and wait at the other end (SIOCOUTQ).
int bytesOf(int descriptor, unsigned long request) {
  int bytes = 0;
  return ioctl(descriptor, request, &bytes) == 0 ? bytes : -1;
}

/// Wakes the handle so often, and keeps the sockets in which exactly that showed.
void keepThoseWoken(CURLM* multi, int times, std::vector<int>& readers, std::vector<int>& writers) {
  const auto isIdle = [](int socket) {
    return bytesOf(socket, FIONREAD) == 0 && bytesOf(socket, SIOCOUTQ) == 0;
  };
  std::erase_if(readers, [&](int socket) { return !isIdle(socket); });
  std::erase_if(writers, [&](int socket) { return !isIdle(socket); });
  for (int i = 0; i < times; ++i) curl_multi_wakeup(multi);
  std::erase_if(readers, [&](int socket) { return bytesOf(socket, FIONREAD) != times; });
  std::erase_if(writers, [&](int socket) { return bytesOf(socket, SIOCOUTQ) <= 0; });
  curl_multi_poll(multi, nullptr, 0, 0, nullptr);  // takes the wake-ups back
}

}  // namespace

void closeWakeupPairOnExec(CURLM* multi) {
  std::vector<int> readers = localStreams();
  std::vector<int> writers = readers;
  for (const int times : kBeats) keepThoseWoken(multi, times, readers, writers);
  if (readers.size() != 1 || writers.size() != 1) return;
  fcntl(readers.front(), F_SETFD, FD_CLOEXEC);
  fcntl(writers.front(), F_SETFD, FD_CLOEXEC);
}

}  // namespace quorvance
