// A listening socket on 127.0.0.1.
#pragma once

namespace risk_server {

struct BoundSocket {
  int descriptor = -1;
  int port = 0;
};

// Life: listens; any number of times it ends accepting and listens again; closed by the destructor,
// when nobody accepts any more. The port is held all the time, also while it refuses connections.
// Any thread, but endAccepting() and listenAgain() one after the other.
class ListeningSocket {
 public:
  // 0 takes a free port. Throws std::system_error.
  explicit ListeningSocket(int port);
  ~ListeningSocket();
  ListeningSocket(const ListeningSocket&) = delete;
  ListeningSocket& operator=(const ListeningSocket&) = delete;

  int port() const { return port_; }

  // Blocks. The caller owns the descriptor; below 0 on failure, errno says why.
  int acceptOne() const;

  // Every accept, running or to come, fails from now on; connections are refused.
  void endAccepting() const;
  // Throws std::system_error.
  void listenAgain() const;

 private:
  explicit ListeningSocket(BoundSocket bound) : descriptor_(bound.descriptor), port_(bound.port) {}

  const int descriptor_;
  const int port_;
};

}  // namespace risk_server
