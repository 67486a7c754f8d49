#include "platform/linux/http/curl_http_session.h"

#include <curl/curl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <future>
#include <iterator>
#include <latch>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "platform/linux/http/http_exchange_test_support.h"
#include "platform/linux/threads/thread_signals_test_support.h"
#include "platform/testing/lowered_limit_test_support.h"

namespace quorvance {
namespace {

using std::chrono::milliseconds;

TEST(CurlHttpSessionTest, KeepsItsConnectionAndOpensAnotherWhenThatWasClosed) {
  std::promise<void> closed;
  ScriptedTcpServer server([&](ScriptedConnection& connection) {
    if (connection.index() > 0) return echo(connection);
    for (int i = 0; i < 2; ++i) connection.writeReply(bodyOf(connection.readRequest()));
    shutdown(connection.socket(), SHUT_RDWR);  // over loopback the client's end knows at once
    closed.set_value();
  });
  CurlHttpSession session;
  EXPECT_EQ(exchange(session, requestFor(server.url(), "1")).body, "1");
  EXPECT_EQ(exchange(session, requestFor(server.url(), "2")).body, "2");
  EXPECT_EQ(server.connections(), 1U);
  closed.get_future().wait();
  EXPECT_EQ(exchange(session, requestFor(server.url(), "3")).body, "3");
  EXPECT_EQ(server.connections(), 2U);
}

/// What a server saw that answers nothing to "mute": the paths of all heads, in order.
std::vector<std::string> pathsSeenAround(const std::string& muteBody, bool readsBody) {
  std::mutex mutex;
  std::vector<std::string> paths;
  ScriptedTcpServer server([&](ScriptedConnection& connection) {
    for (;;) {
      const std::string head = connection.readHead();
      if (head.empty()) return;
      const std::string path = head.substr(5, head.find(' ', 5) - 5);
      {
        const std::lock_guard lock(mutex);
        paths.push_back(path);
      }
      if (path == "/mute" && !readsBody) return;
      if (!muteBody.empty() && connection.readSome().empty()) return;
      if (path == "/mute") return;
      connection.writeReply("{}");
    }
  });
  CurlHttpSession session;
  EXPECT_EQ(exchange(session, requestFor(server.url("/before"), muteBody)).status, 200);
  const HttpReply reply = exchange(session, requestFor(server.url("/mute"), muteBody));
  EXPECT_TRUE(reply.transportError);
  EXPECT_EQ(reply.status, std::nullopt);
  EXPECT_EQ(reply.body, std::nullopt);
  EXPECT_EQ(exchange(session, requestFor(server.url("/after"), muteBody)).status, 200);
  const std::lock_guard lock(mutex);
  return paths;
}

TEST(CurlHttpSessionTest, ARequestThatAKeptConnectionLeavesUnansweredIsSeenOnce) {
  const std::vector<std::string> expected = {"/before", "/mute", "/after"};
  EXPECT_EQ(pathsSeenAround("{}", true), expected);
  EXPECT_EQ(pathsSeenAround("{}", false), expected);
  EXPECT_EQ(pathsSeenAround("", true), expected);  // nothing to rewind, so nothing to stop a repeat
}

TEST(CurlHttpSessionTest, UrlsThatCannotBeSentToFailOnTheSessionsThread) {
  CurlHttpSession session;
  std::promise<std::thread::id> sessionThread;
  session.dispatch([&] { sessionThread.set_value(std::this_thread::get_id()); });
  const auto expected = sessionThread.get_future().get();
  for (const std::string url : {"", "127.0.0.1/x", "ftp://127.0.0.1/", "http://a b/"}) {
    std::promise<std::thread::id> thread;
    session.send(requestFor(url), [&](const HttpReply& reply) {
      EXPECT_EQ(errorCode(reply) == CURLE_UNSUPPORTED_PROTOCOL, url.starts_with("ftp"));
      EXPECT_EQ(reply.status, std::nullopt);
      thread.set_value(std::this_thread::get_id());
    });
    EXPECT_EQ(thread.get_future().get(), expected);
  }
}

TEST(CurlHttpSessionTest, ConnectionsThatNothingUsesAreClosedAndTheNextRequestOpensOne) {
  constexpr std::ptrdiff_t kBurst = 8;
  std::latch arrived(kBurst);
  std::latch closed(kBurst);
  ScriptedTcpServer server([&](ScriptedConnection& connection) {
    connection.readRequest();
    if (connection.index() < kBurst) arrived.arrive_and_wait();
    connection.writeReply("{}");
    if (connection.index() >= kBurst) return;
    connection.waitForEnd();
    closed.count_down();
  });
  CurlHttpSession session({}, std::make_shared<ThreadRetries>(), {}, milliseconds(50));
  std::latch answered(kBurst);
  for (std::ptrdiff_t i = 0; i < kBurst; ++i) {
    session.send(requestFor(server.url()), [&](const HttpReply&) { answered.count_down(); });
  }
  answered.wait();
  closed.wait();
  EXPECT_EQ(exchange(session, requestFor(server.url())).status, 200);
  EXPECT_EQ(server.connections(), kBurst + 1U);
}

auto threadCount() {
  const std::filesystem::directory_iterator tasks("/proc/self/task");
  return std::distance(begin(tasks), end(tasks));
}

TEST(CurlHttpSessionTest, WithoutADescriptorEverythingWaitsForTheNextUse) {
  std::string log;
  std::promise<void> done;
  const auto threadsBefore = threadCount();
  CurlHttpSession session;
  {
    const NoMoreDescriptors none;
    session.dispatch([&] { log += "a"; });
  }
  EXPECT_LE(threadCount(), threadsBefore);  // a thread would be there, and deaf
  session.dispatch([&] {
    log += "b";
    done.set_value();
  });
  done.get_future().wait();
  EXPECT_EQ(log, "ab");
}

TEST(CurlHttpSessionTest, ManyRequestsAreInFlightTogetherUpToTheLimit) {
  constexpr int kRequests = 80;
  std::latch full(CurlHttpSession::kMaxInFlight);
  std::atomic<int> atOnce = 0;
  std::atomic<int> most = 0;
  ScriptedTcpServer server([&](ScriptedConnection& connection) {
    // The first on each connection is answered when as many as allowed have come.
    for (bool isFirst = true;; isFirst = false) {
      const std::string request = connection.readRequest();
      if (request.empty()) return;
      const int now = ++atOnce;
      for (int seen = most; now > seen && !most.compare_exchange_weak(seen, now);) {
      }
      if (isFirst) full.arrive_and_wait();
      --atOnce;
      connection.writeReply(bodyOf(request));
    }
  });
  std::latch done(kRequests);
  CurlHttpSession session;
  for (int i = 0; i < kRequests; ++i) {
    session.send(requestFor(server.url(), std::to_string(i)), [&, i](const HttpReply& reply) {
      EXPECT_EQ(reply.body, std::to_string(i));
      done.count_down();
    });
  }
  done.wait();
  EXPECT_EQ(most, static_cast<int>(CurlHttpSession::kMaxInFlight));
  EXPECT_EQ(server.connections(), CurlHttpSession::kMaxInFlight);
}

TEST(CurlHttpSessionTest, TheTimeoutOfAWaitingRequestBeginsWithItsTurn) {
  ScriptedTcpServer server([](ScriptedConnection& connection) {
    const std::string request = connection.readRequest();
    if (bodyOf(request) == "answer") connection.writeReply("{}");
    connection.waitForEnd();
  });
  CurlHttpSession session;
  HttpRequest mute = requestFor(server.url(), "none");
  mute.timeout = milliseconds(3000);
  for (std::size_t i = 0; i < CurlHttpSession::kMaxInFlight; ++i) {
    session.send(mute, [](const HttpReply& reply) {
      EXPECT_EQ(errorCode(reply), CURLE_OPERATION_TIMEDOUT);
    });
  }
  HttpRequest late = requestFor(server.url(), "answer");
  late.timeout = milliseconds(2500);
  EXPECT_EQ(exchange(session, std::move(late)).status, 200);
}

TEST(CurlHttpSessionTest, MoreWaitingRequestsThanTheLimitFail) {
  ScriptedTcpServer server([](ScriptedConnection& connection) { connection.waitForEnd(); });
  std::promise<HttpReply> refused;
  std::atomic<int> completions = 0;
  {
    CurlHttpSession session;
    // On the session's own thread, which can therefore not begin with any of them.
    session.dispatch([&] {
      for (std::size_t i = 0; i < CurlHttpSession::kMaxWaiting; ++i) {
        session.send(requestFor(server.url()), [&](const HttpReply&) { ++completions; });
      }
      session.send(requestFor(server.url()),
                   [&](HttpReply reply) { refused.set_value(std::move(reply)); });
    });
    EXPECT_EQ(errorCode(refused.get_future().get()), CURLE_AGAIN);
  }
  EXPECT_EQ(completions, 0);
}

TEST(CurlHttpSessionTest, DispatchedTasksRunInOrderAndNeverInsideTheCall) {
  CurlHttpSession session;
  std::string log;
  std::promise<void> done;
  session.dispatch([&] {
    session.dispatch([&] { log += "b"; });
    session.dispatch([&] {
      log += "c";
      done.set_value();
    });
    log += "a";
  });
  done.get_future().wait();
  EXPECT_EQ(log, "abc");
}

TEST(CurlHttpSessionTest, DestructionDropsWhatIsInFlight) {
  std::promise<void> arrived;
  ScriptedTcpServer server([&](ScriptedConnection& connection) {
    connection.readRequest();
    arrived.set_value();
    connection.waitForEnd();
  });
  auto session = std::make_unique<CurlHttpSession>();
  std::promise<void> dropped;
  session->send(requestFor(server.url()), [signal = signalWhenDropped(dropped)](const HttpReply&) {
    FAIL() << "was to be dropped";
  });
  arrived.get_future().wait();
  session.reset();
  EXPECT_EQ(dropped.get_future().wait_for(milliseconds(0)), std::future_status::ready);
}

TEST(CurlHttpSessionTest, DestroyedByItsOwnCompletionDropsTheOthers) {
  std::latch arrived(2);
  std::latch answered(2);
  std::promise<void> mayAnswer;
  const std::shared_future<void> go = mayAnswer.get_future().share();
  ScriptedTcpServer server([&](ScriptedConnection& connection) {
    connection.readRequest();
    arrived.count_down();
    go.wait();
    connection.writeReply("{}");
    answered.count_down();
    connection.waitForEnd();
  });
  auto session = std::make_unique<CurlHttpSession>();
  std::promise<void> ended;
  auto threadEnd = ended.get_future();
  std::promise<void> firstDropped;
  std::promise<void> secondDropped;
  std::atomic<int> completions = 0;
  for (std::promise<void>* const dropped : {&firstDropped, &secondDropped}) {
    session->send(requestFor(server.url()),
                  [&, signal = signalWhenDropped(*dropped)](const HttpReply&) {
                    ++completions;
                    session.reset();
                  });
  }
  arrived.wait();
  // Holds the session's thread until both replies are there, so that it finds them together, and
  // this thread is out of the session.
  std::promise<void> dispatched;
  session->dispatch([&] {
    signalAtThreadEnd(std::move(ended));
    mayAnswer.set_value();
    answered.wait();
    dispatched.get_future().wait();
  });
  dispatched.set_value();
  firstDropped.get_future().wait();
  secondDropped.get_future().wait();
  threadEnd.wait();
  EXPECT_EQ(completions, 1);
}

}  // namespace
}  // namespace quorvance
