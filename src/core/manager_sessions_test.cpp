#include <gmock/gmock.h>

#include "core/manager_world_test_support.h"
#include "quorvance/account_check_points.h"

namespace quorvance {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

TEST(SessionTest, PayloadCarriesAllSnapshotsAndNoCheckpoint) {
  ManagerWorld world;
  world.setup();
  world.manager->sendDataWithNewSession();
  world.time->run();
  const auto sent = world.http->sentTo(ManagerWorld::kSessionPath);
  ASSERT_EQ(sent.size(), 1U);
  EXPECT_THAT(keysOf(sent[0].body),
              ElementsAre("session", "checkpoint_additional_data", "device_data", "sim_data",
                          "user_data", "settings_data", "keys", "version"));
  EXPECT_EQ(textOf(sent[0].body["user_data"]), "{}");
  EXPECT_EQ(findMember(sent[0].body["keys"], "checkpoint"), nullptr);
}

TEST(SessionTest, IsAcceptedByAnyTextThatContainsOk) {
  const std::vector<std::pair<HttpReply, bool>> replies = {
      {okReply(R"({"response":"OK"})"), true},
      {okReply(R"({"response":"session OK, thanks"})"), true},
      {okReply(R"({"response":"ok"})"), false},
      {okReply(R"({"response":true})"), false},
      {okReply(R"({"OK":"OK"})"), false},
      {okReply("[\"OK\"]"), false},
      {okReply("OK"), false},
      {statusReply(201, R"({"response":"OK"})"), false},
      {refusedReply(), false},
  };
  for (const auto& [reply, isAccepted] : replies) {
    ManagerWorld world;
    world.http->answerOnce(ManagerWorld::kSessionPath, reply);
    world.http->answer(ManagerWorld::kSessionPath, okReply(R"({"response":"OK"})"));
    world.setup();
    world.manager->sendDataWithNewSession();
    world.time->advance(10min);
    EXPECT_EQ(world.http->countTo(ManagerWorld::kSessionPath), isAccepted ? 1U : 2U)
        << reply.body.value_or("none");
  }
}

TEST(SessionTest, SendLeavesNoTraceEntry) {
  ManagerWorld world;
  world.configure(ManagerWorld::kTraceManager);
  world.context->tracing->clear();
  world.manager->sendDataWithNewSession();
  world.time->run();
  EXPECT_TRUE(world.context->tracing->isEmpty());
}

/// What a host sees of a logout through its own platform: each look at it says who the user is, in
/// which session, and whether the logout is told yet.
struct LogoutWatch : FakeIdentity, FakeFaceDetection {
  ManagerWorld* world = nullptr;
  std::vector<std::string> lines;

  void note(const std::string& who) {
    if (world == nullptr) return;
    lines.push_back(who + ": " + world->store->read("user_id").text + " " +
                    world->context->state->currentSession().idSession.substr(37) +
                    (world->manager->logoutEventNow() ? " told" : ""));
  }
  std::optional<std::string> vendorIdentifier() override {
    note("identifier");
    return vendor;
  }
  void reset() override { note("face, " + world->traces().back()); }
};

TEST(SessionTest, LogoutTakesItsStepsInOrder) {
  const auto watch = std::make_shared<LogoutWatch>();
  ManagerWorld world([&](Platform& seam) { seam.identity = watch, seam.faceDetection = watch; });
  world.configure(ManagerWorld::kTraceManager);
  world.put({"activity1.json"});
  const std::string left = *world.manager->getSessionId();
  world.time->advance(5ms);
  world.context->tracing->clear();
  const std::uint64_t delayedPosts = world.time->delayedPosts();
  watch->world = &world;
  world.manager->logout();
  watch->world = nullptr;
  // The identifier is asked for by the new session; its send asks in the background.
  EXPECT_THAT(watch->lines, ElementsAre("identifier: UNKNOWN 1700000000000",
                                        "face, logout() Start: UNKNOWN 1700000000005 told"));
  EXPECT_THAT(world.traces(), ElementsAre("logout() Start", "logout() End"));
  EXPECT_EQ(world.manager->identity().userId(), std::nullopt);
  world.time->run();
  EXPECT_GT(world.time->delayedPosts(), delayedPosts);
  const auto activity = world.http->sentTo(ManagerWorld::kActivityPath);
  const auto session = world.http->sentTo(ManagerWorld::kSessionPath);
  ASSERT_EQ(activity.size(), 1U);
  ASSERT_EQ(session.size(), 1U);
  EXPECT_EQ(textOf(activity[0].body["keys"]["user_id"]), R"("u1")");
  EXPECT_EQ(*findText(activity[0].body["session"], "idSession"), left);
  EXPECT_EQ(textOf(session[0].body["keys"]["user_id"]), R"("UNKNOWN")");
  EXPECT_EQ(
      textOf(session[0].body["session"]),
      R"({"idSession":")" + *world.manager->getSessionId() + R"(","timeSession":1700000000005})");
}

TEST(SessionTest, IdentifierOfANewSessionIsMadeBeforeItsTime) {
  ManagerWorld world([](Platform& seam) { seam.clock = std::make_shared<TickingClock>(); });
  world.setup();
  world.manager->logout();
  const Session session = world.context->state->currentSession();
  EXPECT_LT(session.idSession.substr(37), std::to_string(session.timeSession));
}

// A retry that waits asks for the session of its time.
TEST(SessionTest, AcceptedSessionStopsTheRetryOfThatSessionAlone) {
  ManagerWorld world;
  int sends = 0;
  world.http->answer(ManagerWorld::kSessionPath, [&](const SentRequest&) {
    ++sends;
    // The user leaves before the answer to the first session is there.
    if (sends == 1) world.manager->logout();
    return sends == 2 ? refusedReply() : okReply(R"({"response":"OK"})");
  });
  world.setup();
  world.manager->sendDataWithNewSession();
  world.time->advance(10s - 1ms);
  EXPECT_EQ(sends, 2);
  world.time->advance(1ms);
  ASSERT_EQ(sends, 3);
  const auto sent = world.http->sentTo(ManagerWorld::kSessionPath);
  EXPECT_NE(sent[0].body["session"], sent[1].body["session"]);
  EXPECT_EQ(sent[1].body["session"], sent[2].body["session"]);
  world.time->advance(10min);
  EXPECT_EQ(sends, 3);
}

TEST(SessionTest, EverySendMustBeAcceptedAnew) {
  ManagerWorld world;
  world.http->answerOnce(ManagerWorld::kSessionPath, okReply(R"({"response":"OK"})"));
  world.http->answerOnce(ManagerWorld::kSessionPath, refusedReply());
  world.http->answer(ManagerWorld::kSessionPath, okReply(R"({"response":"OK"})"));
  world.setup();
  for (const std::size_t sends : {1U, 3U}) {
    world.manager->sendDataWithNewSession();
    world.time->advance(10min);
    EXPECT_EQ(world.http->countTo(ManagerWorld::kSessionPath), sends);
  }
}

}  // namespace
}  // namespace quorvance
