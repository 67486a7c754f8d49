#include "apps/risk_server/http/listening_socket.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <string>
#include <system_error>

namespace risk_server {
namespace {

constexpr int kBacklog = 256;

[[noreturn]] void throwSocketError(const std::string& what) {
  throw std::system_error(errno, std::generic_category(), what);
}

sockaddr_in loopbackAddress(int port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  return address;
}

int boundSocket(int port) {
  const int descriptor = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (descriptor < 0) throwSocketError("socket");
  const int on = 1;
  // Without it a restart on the same port fails for a minute, no more.
  (void)setsockopt(descriptor, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  const sockaddr_in address = loopbackAddress(port);
  if (::bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) {
    return descriptor;
  }
  const int code = errno;
  ::close(descriptor);
  errno = code;
  throwSocketError("port " + std::to_string(port));
}

int portOf(int descriptor) {
  sockaddr_in address{};
  socklen_t length = sizeof address;
  // Of a socket that is bound it cannot fail.
  (void)::getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &length);
  return ntohs(address.sin_port);
}

// Also a port that the system chose is bound by its number: that alone keeps it when the socket
// does not listen, and a client's own socket would else be given it and find itself.
BoundSocket bindLoopback(int port) {
  const int first = boundSocket(port);
  const int given = portOf(first);
  if (port != 0) return {first, given};
  try {
    const int second = boundSocket(given);
    ::close(first);
    return {second, given};
  } catch (...) {
    ::close(first);
    throw;
  }
}

}  // namespace

// Delegates, so that the destructor closes the socket when listening fails.
ListeningSocket::ListeningSocket(int port) : ListeningSocket(bindLoopback(port)) { listenAgain(); }

ListeningSocket::~ListeningSocket() { ::close(descriptor_); }

void ListeningSocket::listenAgain() const {
  if (::listen(descriptor_, kBacklog) != 0) throwSocketError("port " + std::to_string(port_));
}

int ListeningSocket::acceptOne() const {
  return ::accept4(descriptor_, nullptr, nullptr, SOCK_CLOEXEC);
}

void ListeningSocket::endAccepting() const { ::shutdown(descriptor_, SHUT_RDWR); }

}  // namespace risk_server
