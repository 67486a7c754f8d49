#include "core/retried_exchange.h"

#include <gmock/gmock.h>

#include "platform/testing/test_world.h"

namespace quorvance {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kPath = "qrsk-med/3.0/TracingData/";

/// An exchange whose rules a test sets; what its answers were is written down.
struct ExchangeWorld : TestWorld {
  bool isNeeded = true;
  std::vector<std::string> answers;
  std::vector<Task> waiting;
  std::shared_ptr<Context> context = std::make_shared<Context>(platform());
  std::shared_ptr<QuorvanceNetworkManager> client = std::make_shared<QuorvanceNetworkManager>(
      context->state, std::make_shared<NetworkCallMaker>(context->callServices()));
  RetriedExchange exchange{
      context,
      client,
      {.service = Service::tracingData,
       .traceName = "exchange",
       .whenReady = [this](Task task) { waiting.push_back(std::move(task)); },
       .makeBody = [this] { return *parseJson(isNeeded ? R"({"needed":1})" : "{}"); },
       .take = [this](const auto& answer) { return take(answer); },
       .isNeeded = [this] { return isNeeded; }}};

  ExchangeWorld() { client->identity().setServerUrl("http://risk.test/"); }

  bool take(const RetriedExchange::Answer& answer) {
    answers.push_back(answer.session.idSession + " " + answer.response.text());
    return answer.response.succeeded();
  }
  /// Lets what waits for its body go on.
  void makeReady() {
    for (const Task& task : std::exchange(waiting, {})) task();
    time->run();
  }
};

TEST(RetriedExchangeTest, BeginsAnewTenSecondsAfterAFailureWhileItsAnswerIsNeeded) {
  ExchangeWorld world;
  world.http->answer(kPath, refusedReply());
  world.exchange.ask(nullptr);
  world.makeReady();
  EXPECT_EQ(world.answers.size(), 1U);
  world.isNeeded = false;
  world.time->advance(10s - 1ms);
  EXPECT_THAT(world.waiting, IsEmpty());
  // It is asked only then whether the answer is needed: whatever came before does not count.
  world.isNeeded = true;
  world.time->advance(1ms);
  EXPECT_EQ(world.waiting.size(), 1U);
  world.makeReady();
  world.isNeeded = false;
  world.time->advance(10min);
  EXPECT_THAT(world.waiting, IsEmpty());
  EXPECT_EQ(world.answers.size(), 2U);
  // Asked, it begins at once, needed or not; an answer that was taken ends it.
  world.isNeeded = true;
  world.http->answer(kPath, okReply("{}"));
  world.exchange.ask(nullptr);
  world.makeReady();
  world.time->advance(10min);
  EXPECT_THAT(world.waiting, IsEmpty());
  EXPECT_EQ(world.http->countTo(kPath), 3U);
}

TEST(RetriedExchangeTest, CallIsSettledWhenAskedAndItsBodyMadeWhenReady) {
  ExchangeWorld world;
  const Session session = world.context->state->currentSession();
  world.client->identity().setUserId("u1");
  world.exchange.ask(nullptr);
  world.client->identity().setUserId("u2");
  world.context->state->startNewSession();
  world.isNeeded = false;
  world.makeReady();
  ASSERT_EQ(world.http->countTo(kPath), 1U);
  const Json body = world.http->sentTo(kPath)[0].body;
  EXPECT_EQ(findMember(body, "needed"), nullptr);
  EXPECT_EQ(textOf(body["keys"]["user_id"]), R"("u1")");
  EXPECT_EQ(body["session"], session.getJson());
  EXPECT_TRUE(world.answers.at(0).starts_with(session.idSession));
}

TEST(RetriedExchangeTest, WorkHoldsTheOwnerAndACallWithoutAnAnswerEndsInSilence) {
  ExchangeWorld world;
  auto owner = std::make_shared<int>(0);
  const std::weak_ptr<int> held = owner;
  world.http->answerOnce(kPath, refusedReply());
  world.exchange.askLater(std::move(owner));
  world.time->advance(10s);
  world.makeReady();
  EXPECT_FALSE(held.expired());
  world.client->identity().setServerUrl("no url");
  world.time->advance(10s);
  world.makeReady();
  EXPECT_TRUE(held.expired());
  EXPECT_EQ(world.answers.size(), 1U);
  EXPECT_EQ(world.time->waiting(), 0U);
}

}  // namespace
}  // namespace quorvance
