#include "apps/risk_server/console_server/event_feed.h"

#include <gtest/gtest.h>

#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "apps/risk_server/embedded_files.h"
#include "apps/risk_server/http/raw_client.h"
#include "apps/risk_server/risk_server.h"

namespace risk_server {
namespace {

using sample::kEnrichPath;
using sample::RawClient;

class EventFeedTest : public testing::Test {
 protected:
  EventFeedTest() : server_(withConsole()) { server_.start(); }

  static RiskServerOptions withConsole() {
    RiskServerOptions options;
    options.consolePort = 0;
    return options;
  }

  // A call that the feed tells of.
  void call() {
    RawClient client(server_.url());
    client.send(sample::rawPost(kEnrichPath, sample::commonBody().dump(), "Connection: close\r\n"));
    client.receiveAll();
  }

  std::unique_ptr<RawClient> ask(const std::string& target, const std::string& headers = {}) {
    auto client = std::make_unique<RawClient>(server_.consoleUrl());
    client->send("GET " + target + " HTTP/1.1\r\n" + sample::hostHeader(server_.consoleUrl()) +
                 headers + "\r\n");
    return client;
  }

  // Reads until every one of these is there, and an event ends.
  static std::string readUntil(RawClient& client, const std::vector<std::string>& parts) {
    std::string all;
    for (;;) {
      const bool hasAll = std::all_of(parts.begin(), parts.end(), [&](const std::string& part) {
        return all.find(part) != std::string::npos;
      });
      if (hasAll && all.ends_with("\n\n")) return all;
      const std::string some = client.receiveSome();
      if (some.empty()) return "ended: " + all;
      all += some;
    }
  }

  static std::string lastIdIn(const std::string& events) {
    const auto at = events.rfind("\nid: ") + 5;
    return events.substr(at, events.find('\n', at) - at);
  }

  RiskServer server_;
};

TEST_F(EventFeedTest, tellsWhatIsThereAndWhatComesAndResumes) {
  call();
  const auto first = ask("/control/events");
  const std::string begin =
      readUntil(*first, {"\"id\":1", "\"delivery\":\"whole\"", "event: state"});
  EXPECT_EQ(begin.find("ended"), std::string::npos) << begin;
  EXPECT_NE(begin.find("Content-Type: text/event-stream\r\n"), std::string::npos);
  call();
  readUntil(*first, {"\"id\":2", "\"delivery\":\"whole\""});
  server_.setFaults(R"([{"path": "*", "hang": true, "name": "night"}])");
  readUntil(*first, {"\"name\":\"night\""});

  const auto resumed = ask("/control/events", "Last-Event-ID: " + lastIdIn(begin) + "\r\n");
  const std::string rest = readUntil(*resumed, {"\"id\":2"});
  EXPECT_EQ(rest.find("\"id\":1,"), std::string::npos) << rest;
  // A number of another run says nothing.
  const auto stranger = ask("/control/events?after=000000000000:9");
  readUntil(*stranger, {"\"id\":1,", "\"id\":2,"});
}

TEST_F(EventFeedTest, tellsThatTheServiceIsDownAndUpAgain) {
  const auto stream = ask("/control/events");
  readUntil(*stream, {"\"serving\":true"});
  server_.goDown();
  readUntil(*stream, {"\"serving\":false"});
  server_.comeUp();
  EXPECT_EQ(readUntil(*stream, {"\"serving\":true"}).find("ended"), std::string::npos);
}

TEST(EventFeedStreamsTest, areBoundedAndGivenBack) {
  const Contract contract = RiskServerOptions().contract;
  ExchangeLog log(std::nullopt);
  FaultList faults;
  ServiceHandler services(contract, Json::object(), {}, "key", faults, log);
  const ServerState state(services, faults, log, {[] { return ""; }, [] { return true; }});
  const Masker masker(contract, "key");
  ChangeSignal signal;
  EventFeed feed(log, state, masker, signal);
  std::vector<HttpReply> streams;
  for (int i = 0; i < kMaxEventStreams; ++i) {
    streams.push_back(feed.open({}));
    EXPECT_EQ(streams.back().status, 200);
  }
  EXPECT_EQ(feed.open({}).status, 503);
  streams.pop_back();
  EXPECT_EQ(feed.open({}).status, 200);
}

TEST_F(EventFeedTest, stopsAtOnceWhileStreamsAreOpen) {
  const auto stream = ask("/control/events");
  readUntil(*stream, {"event: state"});
  server_.stop();
  stream->receiveAll();
  EXPECT_EQ(stream->ending(), sample::Ending::kClosed);
}

TEST_F(EventFeedTest, servesThePageAsItLiesInItsFolder) {
  for (const EmbeddedFile& file : embeddedConsole()) {
    const std::string reply = ask("/" + file.path, "Connection: close\r\n")->receiveAll();
    std::ifstream stream(std::string(QUORVANCE_CONSOLE_FOLDER) + "/" + file.path);
    std::ostringstream onDisk;
    onDisk << stream.rdbuf();
    EXPECT_TRUE(reply.ends_with("\r\n\r\n" + onDisk.str())) << file.path;
    EXPECT_NE(reply.find("Content-Security-Policy: default-src 'none'; script-src 'self'"),
              std::string::npos);
  }
  EXPECT_NE(ask("/", "Connection: close\r\n")->receiveAll().find("text/html"), std::string::npos);
  EXPECT_NE(ask("/none.js", "Connection: close\r\n")->receiveAll().find(" 404 "),
            std::string::npos);
}

}  // namespace
}  // namespace risk_server
