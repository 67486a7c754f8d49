// What a host waits for at its end, and why it gets no verdict, over the real platform.

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <future>

#include "test/child_process.h"
#include "test/child_programs.h"
#include "test/https_server_test_support.h"
#include "test/real_world_test_support.h"

namespace quorvance {
namespace {

using namespace std::chrono_literals;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr int kAttempts = 10;  // of which a busy machine may spoil some

template <class Call>
milliseconds timeOf(Call call) {
  const auto begin = steady_clock::now();
  call();
  return std::chrono::floor<milliseconds>(steady_clock::now() - begin);
}

TEST(FlushTest, WaitsAsLongAsAServerHangsAndNotLonger) {
  RealWorld world;
  world.server.setFaults(R"([{"path": "*", "hang": true}])");
  QuorvanceManager manager(world.platform());
  manager.setupWithServerUrl(world.server.url(), "anna");
  manager.arriveToCheckPoint(General());
  ASSERT_TRUE(world.server.waitForAppliedFaults(2, kTestPatience));
  milliseconds shortest = kTestPatience;
  for (int i = 0; i < kAttempts && shortest >= 250ms; ++i) {
    shortest = std::min(shortest, timeOf([&] { EXPECT_FALSE(manager.flush(200ms)); }));
    EXPECT_GE(shortest, 200ms);
  }
  EXPECT_LT(shortest, 250ms);
  EXPECT_EQ(manager.pending(), 2U);
  world.server.goDown();
  EXPECT_TRUE(manager.flush(kTestPatience));
  // Offline and idle, with retries to come.
  EXPECT_EQ(manager.status().lastFailure->reason, VerdictReason::unreachable);
  milliseconds idle = kTestPatience;
  for (int i = 0; i < kAttempts && idle >= 50ms; ++i) {
    idle = std::min(idle, timeOf([&] { EXPECT_TRUE(manager.flush(kTestPatience)); }));
  }
  EXPECT_LT(idle, 50ms);
}

TEST(FlushTest, ReturnsOnTheThreadOfTheHostsMainLoop) {
  RealWorld world;
  const auto loop = std::make_shared<HostLoopQueue>();
  QuorvanceManager manager(world.platform(loop));
  manager.setupWithServerUrl(world.server.url(), "anna");
  manager.arriveToCheckPoint(General());
  manager.logout();
  EXPECT_TRUE(manager.flush(kTestPatience));  // nobody dispatches
  EXPECT_EQ(world.server.exchanges().size(), 3U);
  world.server.setFaults(R"([{"path": "*", "hang": true}])");
  const Verdict verdict = manager.riskForCheckPoint(Launch(), {.deadline = 100ms}).get();
  EXPECT_EQ(verdict.reason, VerdictReason::timedOut);
  EXPECT_GE(verdict.elapsed, 100ms);
  EXPECT_LT(verdict.elapsed, 5s);
  manager.startNewScreenListener(ScreenListenerType::GENERAL, 1, nullptr)->finishScreenListener();
  world.server.goDown();
  EXPECT_FALSE(manager.flush(500ms));  // the end of a screen waits for its loop
  loop->dispatch();
  EXPECT_TRUE(manager.flush(kTestPatience));
}

TEST(FlushTest, TellsThatTheStateCannotBeStored) {
  RealWorld world;
  std::ofstream(world.folder.at("data")) << "a file where the folder should be";
  QuorvanceManager manager(world.platform());
  manager.configureWithUserId("anna");
  EXPECT_FALSE(manager.flush(kTestPatience));
  EXPECT_EQ(manager.pending(), 1U);
}

TEST(FlushTest, InsideACompletionReturnsAtOnceAndSeveralThreadsMayWait) {
  RealWorld world;
  QuorvanceManager manager(world.platform());
  manager.setupWithServerUrl(world.server.url(), "anna");
  std::promise<bool> inside;
  manager.getRiskForCheckPoint(Launch(), {}, [&](const Verdict& verdict) {
    EXPECT_EQ(verdict.reason, VerdictReason::answered);
    inside.set_value(manager.flush(kTestPatience));
  });
  const auto flush = [&] { return manager.flush(kTestPatience); };
  std::future<bool> others[] = {std::async(std::launch::async, flush),
                                std::async(std::launch::async, flush)};
  EXPECT_FALSE(inside.get_future().get());
  for (auto& other : others) EXPECT_TRUE(other.get());
  EXPECT_TRUE(manager.shutdown(kTestPatience));
  EXPECT_EQ(manager.riskForCheckPoint(Launch()).get().reason, VerdictReason::shutDown);
}

/// Signs the request STEM.pem, over so many days from now.
void sign(const std::string& stem, const std::string& authority, int days) {
  std::filesystem::rename(stem + ".pem", stem + ".csr");
  runOpenssl("x509 -req -in " + stem + ".csr -CA " + authority + ".pem -CAkey " + authority +
             ".key -CAcreateserial -copy_extensions copy -days " + std::to_string(days) + " -out " +
             stem + ".pem");
}

TEST(ReasonTest, AServersCertificateIsTold) {
  const TemporaryFolder folder;
  const std::string authority = folder.at("authority");
  const std::string stranger = folder.at("stranger");
  makeCertificate(authority, "-x509");
  makeCertificate(stranger, "-x509");
  // What a host that trusts the authority says of a server.
  const auto reasonOf = [&](const std::string& trusted, const std::string& name, int days) {
    const std::string stem = folder.at("server");
    makeCertificate(stem, "-addext subjectAltName=" + name);
    sign(stem, authority, days);
    const HttpsServer server(stem, 100);
    ChildProcess child({kExitChildProgram, "print_reason", folder.at("data"), server.url(),
                        trusted + ".pem", "0"});
    EXPECT_EQ(child.waitForEnd().exitStatus, EXIT_SUCCESS);
    return child.said();
  };
  EXPECT_EQ(reasonOf(authority, "IP:127.0.0.1", 2), "answered\n");
  EXPECT_EQ(reasonOf(authority, "IP:127.0.0.1", -1), "certificate\n");
  EXPECT_EQ(reasonOf(authority, "DNS:other.test", 2), "certificate\n");
  EXPECT_EQ(reasonOf(stranger, "IP:127.0.0.1", 2), "certificate\n");
}

Verdict verdictOf(const RealWorld& world, const std::string& url, VerdictOptions options = {}) {
  QuorvanceManager manager(world.platform());
  if (!url.empty()) manager.setServerUrl(url);
  return manager.riskForCheckPoint(Launch(), options).get();
}

TEST(ReasonTest, EveryOtherReasonIsToldOfARealServer) {
  RealWorld world;
  const std::string url = world.server.url();
  const auto under = [&](const std::string& fault, VerdictOptions options = {}) {
    world.server.setFaults(fault.empty() ? "[]" : R"([{"path": "*", )" + fault + "}]");
    return verdictOf(world, url, options);
  };
  EXPECT_EQ(under("").reason, VerdictReason::answered);
  const Verdict refused = under(R"("status": 403)");
  EXPECT_EQ(refused.reason, VerdictReason::refused);
  EXPECT_EQ(refused.httpStatus, 403);
  EXPECT_EQ(under(R"("body": "<html>")").reason, VerdictReason::unreadable);
  EXPECT_EQ(under(R"("reply": {"response": "no"})").reason, VerdictReason::unreadable);
  EXPECT_EQ(under(R"("resetBeforeReply": true)").reason, VerdictReason::unreachable);
  EXPECT_EQ(under(R"("hang": true)", {.deadline = 50ms}).reason, VerdictReason::timedOut);
  // The exchange's own time-out; a deadline does not lengthen it.
  const Verdict late = under(R"("hang": true)", {.deadline = 1h});
  EXPECT_EQ(late.reason, VerdictReason::timedOut);
  EXPECT_GE(late.elapsed, 5s);
  EXPECT_LT(late.elapsed, kTestPatience);
  world.server.goDown();
  EXPECT_EQ(verdictOf(world, url).reason, VerdictReason::unreachable);
  EXPECT_EQ(verdictOf(world, "https" + url.substr(4)).reason, VerdictReason::unreachable);
  EXPECT_EQ(verdictOf(world, "ftp://x/").reason, VerdictReason::cannotBeSent);
  EXPECT_EQ(verdictOf(world, "not a url").reason, VerdictReason::cannotBeSent);
  EXPECT_EQ(verdictOf(world, "https://u@127.0.0.1/").reason, VerdictReason::cannotBeSent);
  EXPECT_EQ(verdictOf(world, "").reason, VerdictReason::notSetUp);
}

}  // namespace
}  // namespace quorvance
