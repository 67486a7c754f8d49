// One accepted connection, as the HTTP parser reads and writes it.
#pragma once

#include <httplib.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "apps/risk_server/http/http_listener.h"

namespace risk_server {

// Request line, headers and chunk frames beside the body.
inline constexpr std::size_t kMaxFramingBytes = std::size_t{1} << 20;
// The longest pause inside of a request, and of a reply that the client does not take.
inline constexpr std::chrono::seconds kTransferTimeout{10};

// Used by the thread that serves the connection; endReading() by any thread.
// Life: waitForRequest, beginRequest, the parser reads the head, endHead, reads and writes; again;
// drain; closed by the destructor.
class ClientConnection : public httplib::Stream, public ReplySink {
 public:
  ClientConnection(int descriptor, const ListenerLimits& limits);  // owns the descriptor
  ~ClientConnection() override;
  ClientConnection(const ClientConnection&) = delete;
  ClientConnection& operator=(const ClientConnection&) = delete;

  // False when the client closed, was idle for too long, or reading was ended.
  bool waitForRequest();
  // From here to endHead() the limit of a head runs, however its bytes drip.
  void beginRequest();
  void endHead() { headDeadline_.reset(); }

  // The target of the request line, byte for byte as it came; empty when the line has none.
  std::string target() const;
  std::string method() const;

  // The request had more bytes than any may have; reading it failed.
  bool requestOverran() const { return budget_ == 0; }

  // The connection cannot be used for a further request.
  void closeAfterReply() { closing_ = true; }
  bool closesAfterReply() const { return closing_; }

  // After a refusal: ends writing and takes what the client still sends, for a bounded time.
  // Closing with unread bytes would reset the connection, and the client might lose the reply.
  void drain();

  // What the parser writes from now on is kept back, until it is taken.
  void holdOutput() { holdsOutput_ = true; }
  std::string takeHeldOutput();

  // For replies that are sent in an unusual way. False when the client ended the connection, be it
  // its own half, or when reading was ended.
  bool pauseUntil(std::chrono::steady_clock::time_point time);
  bool waitUntil(std::chrono::steady_clock::time_point time, int descriptor) override;
  // Never blocks for longer than kTransferTimeout.
  bool send(std::string_view bytes) override;
  // Closing will make the client's reads and writes fail.
  void resetWhenClosed();

  // Whether sending failed, or waiting ended early, because of the client, not of the server.
  bool clientLeft() const { return clientLeft_; }

  // The next read finds the end, and held replies are given up; others are still written.
  void endReading();

  bool is_readable() const override { return true; }
  bool is_writable() const override { return true; }
  ssize_t read(char* bytes, size_t size) override;
  ssize_t write(const char* bytes, size_t size) override;
  void get_remote_ip_and_port(std::string& address, int& port) const override;
  void get_local_ip_and_port(std::string& address, int& port) const override;
  socket_t socket() const override { return descriptor_; }

 private:
  ssize_t fill();
  bool isHeadLate() const;
  void noteRequestLine(const char* bytes, std::size_t size);
  std::string requestLinePart(int index) const;

  bool noteClientLeft();

  const int descriptor_;
  const ListenerLimits limits_;
  std::optional<std::chrono::steady_clock::time_point> headDeadline_;
  std::atomic<bool> readingEnded_{false};
  std::array<char, 16384> buffer_{};
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
  std::size_t budget_ = 0;  // bytes that the request may still have
  std::string requestLine_;
  bool requestLineWhole_ = false;
  bool closing_ = false;
  bool resetting_ = false;
  bool clientLeft_ = false;
  bool holdsOutput_ = false;
  std::string heldOutput_;
};

}  // namespace risk_server
