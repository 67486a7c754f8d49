// HTTP for the risk server: a loopback port, connections that are kept, one handler for every
// request. The parser is cpp-httplib's; accepting and keeping connections is our own, so that a
// stop is prompt, targets arrive undecoded, and a reply may be cut anywhere.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "apps/risk_server/http/reply_delivery.h"

namespace risk_server {

// Each connection has a worker as long as it lives; a client keeps up to 32, and it is not the only
// one.
inline constexpr int kWorkers = 48;

// How long a client may keep an unused connection; its uploads come every 30 s.
inline constexpr std::chrono::seconds kIdleTimeout{120};

// From a request's first byte to the end of its headers: a client that stops in between holds a
// worker.
inline constexpr std::chrono::milliseconds kHeadTimeout{5'000};

struct ListenerLimits {
  int workers = kWorkers;
  std::chrono::seconds idle = kIdleTimeout;
  std::chrono::milliseconds head = kHeadTimeout;
};

inline constexpr std::chrono::milliseconds kMaxDownTime{60'000};

inline constexpr std::size_t kMaxBodyBytes = std::size_t{16} << 20;

struct HttpRequest {
  std::int64_t received = 0;  // milliseconds since 1970, of its first byte
  std::string method;
  std::string target;   // as it came, nothing decoded
  HttpHeaders headers;  // in no order
  std::string body;
  // Why the HTTP layer refuses the request, and the status of that; empty when the request is
  // whole.
  std::string fault;
  int faultStatus = 0;

  // The values of all headers of the name, in any case.
  std::vector<std::string> headersNamed(std::string_view name) const;
};

struct SentReply {
  Delivery delivery = Delivery::kWhole;
  std::int64_t time = 0;  // milliseconds since 1970
  std::int64_t took = 0;  // microseconds since the request's first byte
};

// The connection of a reply that is written bit by bit.
class ReplySink {
 public:
  virtual ~ReplySink() = default;
  // False when the client is gone, takes nothing for too long, or the server goes down.
  virtual bool send(std::string_view bytes) = 0;
  // Waits until the time, or until the descriptor is readable if there is one (not below 0). False
  // as above.
  virtual bool waitUntil(std::chrono::steady_clock::time_point time, int descriptor) = 0;
};

// JSON, unless the headers say something else.
struct HttpReply {
  int status = 200;
  std::string body;
  std::string allow;    // the Allow header; none when empty
  HttpHeaders headers;  // further ones; "Content-Type" replaces the usual one
  ReplyDelivery delivery;
  // Writes a body of unknown length in place of `body`; the connection ends with it.
  std::function<void(ReplySink&)> stream;
  // Called once, by the thread that serves the connection, when the reply is on its way.
  std::function<void(const SentReply&)> whenSent;
};

// Life: started, any number of times down and up again on the same port, stopped. start() and
// stop() by one owner, restart(), goDown() and comeUp() by any thread, the handler's too. The
// handler and the filter are called by many threads at once and must not throw.
class HttpListener {
 public:
  using Handler = std::function<HttpReply(const HttpRequest&)>;

  // Whether a connection is served; one that is not is closed as soon as it is accepted.
  using ConnectionFilter = std::function<bool()>;

  // Called by any thread, with no lock held, when connections are refused from now on, or are
  // served again.
  using StateObserver = std::function<void()>;

  HttpListener(Handler handler, ConnectionFilter acceptsConnection, StateObserver stateChanged = {},
               ListenerLimits limits = {});
  ~HttpListener();  // stops
  HttpListener(const HttpListener&) = delete;
  HttpListener& operator=(const HttpListener&) = delete;

  // Listens on 127.0.0.1; 0 takes a free port. Throws std::system_error.
  void start(int port);

  // The port listened on; 0 before start().
  int port() const;

  // Lets running handlers finish and their replies go out, but not those that are held back or
  // slowed down; kept connections are closed.
  void stop();

  // Refuses connections until comeUp(), and ends those that are there as stop() does.
  void goDown();
  // Throws std::system_error when another server took the port.
  void comeUp();
  // Returns at once; down now, and up by itself after the time, at most kMaxDownTime. A port that
  // is taken then is tried again and again.
  void restart(std::chrono::milliseconds downTime);
  // False when the time is over first, or the listener was stopped.
  bool waitUntilUp(std::chrono::milliseconds timeout) const;
  bool isUp() const;

 private:
  class Workers;
  std::unique_ptr<Workers> workers_;
};

}  // namespace risk_server
