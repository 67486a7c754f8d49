#pragma once

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <list>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace quorvance {

/// The server's end of one connection; a script's thread only.
class ScriptedConnection {
 public:
  ScriptedConnection(int socket, std::size_t index) : socket_(socket), index_(index) {}

  /// Counted from 0 in the order of accepting.
  std::size_t index() const { return index_; }
  int socket() const { return socket_; }

  /// The next head up to its empty line; empty when the client is gone.
  std::string readHead() {
    std::size_t end = buffer_.find("\r\n\r\n");
    while (end == std::string::npos) {
      if (!receive()) return {};
      end = buffer_.find("\r\n\r\n");
    }
    return take(end + 4);
  }
  /// The next request: its head, and the body by its Content-Length. Empty when the client is gone.
  std::string readRequest() {
    std::string request = readHead();
    const std::size_t header = request.find("Content-Length: ");
    if (header == std::string::npos) return request;
    const auto length = std::strtoul(request.c_str() + header + 16, nullptr, 10);
    while (buffer_.size() < length) {
      if (!receive()) return {};
    }
    return request + take(length);
  }
  /// Whatever has come, at least one byte; empty when the client is gone.
  std::string readSome() {
    if (buffer_.empty() && !receive()) return {};
    return take(buffer_.size());
  }
  /// Returns when the client, or the end of the test, has closed the connection.
  void waitForEnd() {
    while (receive()) {
    }
  }
  /// False when the client is gone.
  bool write(std::string_view bytes) {
    while (!bytes.empty()) {
      const ssize_t count = send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
      if (count <= 0) return false;
      bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
  }
  bool writeReply(std::string_view body, std::string_view status = "200 OK") {
    return write("HTTP/1.1 " + std::string(status) + "\r\nContent-Length: " +
                 std::to_string(body.size()) + "\r\n\r\n" + std::string(body));
  }
  /// The script's end will close with a reset instead of an orderly end.
  void resetAtEnd() {
    const linger noLinger = {1, 0};
    setsockopt(socket_, SOL_SOCKET, SO_LINGER, &noLinger, sizeof noLinger);
  }

 private:
  bool receive() {
    std::array<char, 16384> bytes;
    const ssize_t count = recv(socket_, bytes.data(), bytes.size(), 0);
    if (count <= 0) return false;
    buffer_.append(bytes.data(), static_cast<std::size_t>(count));
    return true;
  }
  std::string take(std::size_t length) {
    std::string taken = buffer_.substr(0, length);
    buffer_.erase(0, length);
    return taken;
  }

  const int socket_;
  const std::size_t index_;
  std::string buffer_;
};

/// A server on a free loopback port which runs a script for each connection, on a thread of its
/// own; the connection ends with its script. Destroying it ends what still runs.
class ScriptedTcpServer {
 public:
  using Script = std::function<void(ScriptedConnection& connection)>;

  explicit ScriptedTcpServer(Script script) : script_(std::move(script)) {
    listener_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_EQ(bind(listener_, asAddress(address), sizeof address), 0);
    listen(listener_, SOMAXCONN);
    socklen_t length = sizeof address;
    getsockname(listener_, asAddress(address), &length);
    port_ = ntohs(address.sin_port);
    acceptor_ = std::thread([this] { acceptAll(); });
  }
  ~ScriptedTcpServer() {
    shutdown(listener_, SHUT_RDWR);
    acceptor_.join();
    close(listener_);
    {
      const std::lock_guard lock(mutex_);
      for (const int socket : open_) shutdown(socket, SHUT_RDWR);
    }
    for (std::thread& thread : threads_) thread.join();
  }
  ScriptedTcpServer(const ScriptedTcpServer&) = delete;
  ScriptedTcpServer& operator=(const ScriptedTcpServer&) = delete;

  std::uint16_t port() const { return port_; }
  std::string url(std::string_view path = "/") const {
    return "http://127.0.0.1:" + std::to_string(port_) + std::string(path);
  }
  std::size_t connections() {
    const std::lock_guard lock(mutex_);
    return accepted_;
  }

 private:
  static sockaddr* asAddress(sockaddr_in& address) { return reinterpret_cast<sockaddr*>(&address); }

  void acceptAll() {
    for (;;) {
      const int socket = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
      if (socket < 0) return;
      const std::lock_guard lock(mutex_);
      open_.push_back(socket);
      threads_.emplace_back([this, socket, index = accepted_] { serve(socket, index); });
      ++accepted_;
    }
  }
  void serve(int socket, std::size_t index) {
    ScriptedConnection connection(socket, index);
    script_(connection);
    const std::lock_guard lock(mutex_);
    open_.remove(socket);
    close(socket);
  }

  const Script script_;
  int listener_ = -1;
  std::uint16_t port_ = 0;
  std::mutex mutex_;
  std::size_t accepted_ = 0;
  std::list<int> open_;
  std::vector<std::thread> threads_;
  std::thread acceptor_;
};

}  // namespace quorvance
