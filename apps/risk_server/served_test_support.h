#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "apps/risk_server/http/raw_client.h"
#include "apps/risk_server/risk_server.h"

namespace risk_server {

/// What a client got on a connection of its own.
struct Received {
  std::string head;
  std::string body;
  sample::Ending ending = sample::Ending::kOpen;

  std::string status() const { return head.substr(0, head.find("\r\n")); }
  int code() const { return head.size() < 12 ? -1 : std::stoi(head.substr(9, 3)); }
  std::string header(const std::string& name) const {
    const auto found = head.find("\r\n" + name + ": ");
    if (found == std::string::npos) return {};
    const auto begin = found + name.size() + 4;
    return head.substr(begin, head.find("\r\n", begin) - begin);
  }
  Json json() const { return sample::parsed(body); }
};

/// A server that runs, and calls of it.
class ServedTest : public testing::Test {
 protected:
  static constexpr std::chrono::milliseconds kTestTimeout{30'000};
  static constexpr const char* kVerdictPath = "/qrsk-med/3.0/GetCheckpointRisk/";

  explicit ServedTest(RiskServerOptions options = {}) : server_(std::move(options)) {
    server_.start();
  }

  /// Sends the bytes and reads until the connection ends.
  Received callWith(const std::string& bytes, bool endsSending = false) const {
    sample::RawClient client(server_.url());
    client.send(bytes);
    if (endsSending) client.endSending();
    const std::string all = client.receiveAll();
    const auto end = all.find("\r\n\r\n");
    Received received{all, "", client.ending()};
    if (end != std::string::npos) {
      received.head = all.substr(0, end + 2);
      received.body = all.substr(end + 4);
    }
    return received;
  }
  Received post(const std::string& path, const std::string& body,
                const std::string& headers = {}) const {
    return callWith(sample::rawPost(path, body, "Connection: close\r\n" + headers,
                                    sample::hostHeader(server_.url())));
  }
  Received get(const std::string& path) const {
    return callWith("GET " + path + " HTTP/1.1\r\nConnection: close\r\n" +
                    sample::hostHeader(server_.url()) + "\r\n");
  }

  RiskServer server_;
};

}  // namespace risk_server
