// For tests: a client that sends any bytes and sees how the connection ends.
#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <string>

#include "apps/risk_server/sample_bodies.h"

namespace risk_server::sample {

enum class Ending { kRefused, kOpen, kClosed, kReset, kTimedOut };

// A connection of its own to a server at "http://127.0.0.1:PORT/".
class RawClient {
 public:
  explicit RawClient(const std::string& url)
      : descriptor_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(std::stoi(url.substr(url.rfind(':') + 1))));
    // Only so that a server that never answers fails the test instead of stopping it.
    timeval timeout{};
    timeout.tv_sec = 30;
    setsockopt(descriptor_, SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof timeout);
    if (::connect(descriptor_, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0) {
      ending_ = Ending::kOpen;
    }
  }
  ~RawClient() { ::close(descriptor_); }
  RawClient(const RawClient&) = delete;
  RawClient& operator=(const RawClient&) = delete;

  bool send(const std::string& bytes) {
    return ::send(descriptor_, bytes.data(), bytes.size(), MSG_NOSIGNAL) ==
           static_cast<ssize_t>(bytes.size());
  }
  void endSending() { ::shutdown(descriptor_, SHUT_WR); }

  // Waits for some bytes; none when the connection ended.
  std::string receiveSome() {
    char buffer[65536];
    const ssize_t got = ::recv(descriptor_, buffer, sizeof buffer, 0);
    if (got > 0) return {buffer, static_cast<std::size_t>(got)};
    const bool slow = got < 0 && (errno == EAGAIN || errno == EWOULDBLOCK);
    ending_ = got == 0 ? Ending::kClosed : slow ? Ending::kTimedOut : Ending::kReset;
    return {};
  }
  // A reply comes in pieces: waits until what came ends with this text, or the connection ended.
  std::string receiveUntil(const std::string& end) {
    std::string all;
    while (!all.ends_with(end) && ending_ == Ending::kOpen) all += receiveSome();
    return all;
  }
  std::string receiveAll() {
    std::string all;
    for (std::string some = receiveSome(); !some.empty(); some = receiveSome()) all += some;
    return all;
  }

  Ending ending() const { return ending_; }

 private:
  const int descriptor_;
  Ending ending_ = Ending::kRefused;
};

// "Host: 127.0.0.1:PORT" and the end of the line, of "http://127.0.0.1:PORT/".
inline std::string hostHeader(const std::string& url) {
  const auto begin = url.find("//") + 2;
  return "Host: " + url.substr(begin, url.find('/', begin) - begin) + "\r\n";
}

inline std::string rawPost(const std::string& target, const std::string& body,
                           const std::string& headers = {},
                           const std::string& host = "Host: x\r\n") {
  return "POST " + target + " HTTP/1.1\r\n" + host + "Content-Type: " + kContentType + "\r\n" +
         headers + "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

}  // namespace risk_server::sample
