#include "apps/risk_server/http/client_connection.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

namespace risk_server {
namespace {

constexpr std::size_t kMaxRequestLineBytes = 16384;
// What a refused client may still send before the connection is cut.
constexpr std::size_t kMaxDrainedBytes = std::size_t{32} << 20;
constexpr std::chrono::seconds kDrainTimeout{2};

void setTransferTimeout(int descriptor, std::chrono::seconds timeout) {
  timeval limit{};
  limit.tv_sec = timeout.count();
  // A connection on which an option cannot be set is a dead one: the next read says so.
  (void)setsockopt(descriptor, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
  (void)setsockopt(descriptor, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
}

}  // namespace

ClientConnection::ClientConnection(int descriptor, const ListenerLimits& limits)
    : descriptor_(descriptor), limits_(limits) {
  const int on = 1;
  (void)setsockopt(descriptor_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  setTransferTimeout(descriptor_, kTransferTimeout);
}

ClientConnection::~ClientConnection() { ::close(descriptor_); }

void ClientConnection::drain() {
  if (!closing_ || resetting_) return;
  setTransferTimeout(descriptor_, kDrainTimeout);
  ::shutdown(descriptor_, SHUT_WR);
  const auto deadline = std::chrono::steady_clock::now() + kDrainTimeout;
  std::size_t drained = 0;
  while (drained < kMaxDrainedBytes && std::chrono::steady_clock::now() < deadline) {
    const ssize_t got = ::recv(descriptor_, buffer_.data(), buffer_.size(), 0);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return;
    drained += static_cast<std::size_t>(got);
  }
}

bool ClientConnection::waitForRequest() {
  if (begin_ < end_) return true;
  pollfd watched{descriptor_, POLLIN, 0};
  const auto limit = std::chrono::duration_cast<std::chrono::milliseconds>(limits_.idle).count();
  int ready = 0;
  do {
    ready = ::poll(&watched, 1, static_cast<int>(limit));
  } while (ready < 0 && errno == EINTR);
  // Bytes that come after the reading side was shut are still delivered; they belong to nobody.
  return ready > 0 && fill() > 0 && !readingEnded_;
}

void ClientConnection::beginRequest() {
  budget_ = kMaxBodyBytes + kMaxFramingBytes;
  requestLine_.clear();
  requestLineWhole_ = false;
  headDeadline_ = std::chrono::steady_clock::now() + limits_.head;
}

// Waits for further bytes of the head while it may still come.
bool ClientConnection::isHeadLate() const {
  using std::chrono::milliseconds;
  for (;;) {
    const auto left =
        std::chrono::ceil<milliseconds>(*headDeadline_ - std::chrono::steady_clock::now());
    if (left <= milliseconds::zero()) return true;
    pollfd watched{descriptor_, POLLIN, 0};
    if (::poll(&watched, 1, static_cast<int>(left.count())) > 0) return false;
  }
}

std::string ClientConnection::requestLinePart(int index) const {
  std::size_t from = 0;
  for (; index > 0 && from != std::string::npos; --index) from = requestLine_.find(' ', from + 1);
  if (from == std::string::npos) return {};
  if (from > 0) ++from;
  const std::size_t to = requestLine_.find(' ', from);
  return to == std::string::npos ? std::string() : requestLine_.substr(from, to - from);
}

std::string ClientConnection::method() const { return requestLinePart(0); }

std::string ClientConnection::target() const { return requestLinePart(1); }

void ClientConnection::endReading() {
  readingEnded_ = true;
  ::shutdown(descriptor_, SHUT_RD);
}

ssize_t ClientConnection::fill() {
  ssize_t got = 0;
  do {
    got = ::recv(descriptor_, buffer_.data(), buffer_.size(), 0);
  } while (got < 0 && errno == EINTR);
  begin_ = 0;
  end_ = got > 0 ? static_cast<std::size_t>(got) : 0;
  return got;
}

ssize_t ClientConnection::read(char* bytes, size_t size) {
  if (budget_ == 0) return -1;
  if (begin_ == end_) {
    if (headDeadline_ && isHeadLate()) return -1;
    const ssize_t got = fill();
    if (got <= 0) return got;
  }
  const std::size_t taken = std::min({size, end_ - begin_, budget_});
  std::memcpy(bytes, buffer_.data() + begin_, taken);
  begin_ += taken;
  budget_ -= taken;
  noteRequestLine(bytes, taken);
  return static_cast<ssize_t>(taken);
}

void ClientConnection::noteRequestLine(const char* bytes, std::size_t size) {
  for (std::size_t i = 0; i < size && !requestLineWhole_; ++i) {
    requestLineWhole_ = bytes[i] == '\n' || requestLine_.size() >= kMaxRequestLineBytes;
    if (!requestLineWhole_) requestLine_.push_back(bytes[i]);
  }
}

std::string ClientConnection::takeHeldOutput() {
  holdsOutput_ = false;
  return std::exchange(heldOutput_, {});
}

bool ClientConnection::pauseUntil(std::chrono::steady_clock::time_point time) {
  return waitUntil(time, -1);
}

// Always false, for the callers to return. Going down ends reading, too.
bool ClientConnection::noteClientLeft() {
  clientLeft_ = clientLeft_ || !readingEnded_;
  return false;
}

// Ending the reading half, by either side, is what poll() tells of; requests that wait are not.
bool ClientConnection::waitUntil(std::chrono::steady_clock::time_point time, int descriptor) {
  using std::chrono::milliseconds;
  for (;;) {
    // Rounded up: never before its time.
    const auto left = std::chrono::ceil<milliseconds>(time - std::chrono::steady_clock::now());
    if (left <= milliseconds::zero()) return true;
    // A descriptor below 0 is passed over.
    pollfd watched[] = {{descriptor_, POLLRDHUP, 0}, {descriptor, POLLIN, 0}};
    const int ready = ::poll(watched, 2, static_cast<int>(left.count()));
    if (ready < 0 && errno != EINTR) return noteClientLeft();
    if (ready <= 0) continue;
    if (watched[0].revents != 0) return noteClientLeft();
    return true;
  }
}

bool ClientConnection::send(std::string_view bytes) {
  constexpr auto kLimit = std::chrono::milliseconds(kTransferTimeout).count();
  while (!bytes.empty()) {
    const ssize_t sent =
        ::send(descriptor_, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    if (sent > 0) {
      bytes.remove_prefix(static_cast<std::size_t>(sent));
    } else if (errno == EAGAIN || errno == EWOULDBLOCK) {
      pollfd watched{descriptor_, POLLOUT | POLLRDHUP, 0};
      const int ready = ::poll(&watched, 1, static_cast<int>(kLimit));
      if (ready == 0 || (ready > 0 && (watched.revents & ~POLLOUT) != 0)) return noteClientLeft();
    } else if (errno != EINTR) {
      return noteClientLeft();
    }
  }
  return true;
}

void ClientConnection::resetWhenClosed() {
  resetting_ = true;
  const linger atOnce{1, 0};
  (void)setsockopt(descriptor_, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
}

ssize_t ClientConnection::write(const char* bytes, size_t size) {
  if (holdsOutput_) {
    heldOutput_.append(bytes, size);
    return static_cast<ssize_t>(size);
  }
  ssize_t sent = 0;
  do {
    sent = ::send(descriptor_, bytes, size, MSG_NOSIGNAL);
  } while (sent < 0 && errno == EINTR);
  if (sent < 0) noteClientLeft();
  return sent;
}

// Nothing here depends on who asks.
void ClientConnection::get_remote_ip_and_port(std::string& address, int& port) const {
  address.clear();
  port = 0;
}

void ClientConnection::get_local_ip_and_port(std::string& address, int& port) const {
  address.clear();
  port = 0;
}

}  // namespace risk_server
