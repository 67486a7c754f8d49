#include <gmock/gmock.h>

#include "core/manager_world_test_support.h"

namespace quorvance {
namespace {

using namespace std::chrono_literals;

TEST(TraceUploaderTest, WaitsSendsAndKeepsWhatFailed) {
  ManagerWorld world;
  world.http->answerOnce(ManagerWorld::kTracingPath, statusReply(503));
  world.configure(ManagerWorld::kTraceManager);
  world.manager->configureUserId("u2");
  world.time->advance(30s - 1ms);
  EXPECT_EQ(world.http->countTo(ManagerWorld::kTracingPath), 0U);
  world.time->advance(1ms);
  ASSERT_EQ(world.http->countTo(ManagerWorld::kTracingPath), 1U);
  const std::size_t entries = world.context->tracing->size();
  EXPECT_GT(entries, 0U);
  world.time->advance(30s);
  const auto sent = world.http->sentTo(ManagerWorld::kTracingPath);
  ASSERT_EQ(sent.size(), 2U);
  EXPECT_EQ(sent[1].body["tracingData"].size(), entries);
  EXPECT_TRUE(world.context->tracing->isEmpty());
  world.time->advance(5min);
  EXPECT_EQ(world.http->countTo(ManagerWorld::kTracingPath), 2U);
}

TEST(TraceUploaderTest, EachConfigurationWithALevelStartsOneMoreLoop) {
  ManagerWorld world;
  world.http->answer(ManagerWorld::kTracingPath, statusReply(500));
  world.configure(R"({"tracing_manager": {"level_face_verification_data": true}})");
  world.context->tracing->traceException({"d", 1, "kept", std::nullopt});
  world.setup();
  world.time->run();
  world.time->advance(30s);
  EXPECT_EQ(world.http->countTo(ManagerWorld::kTracingPath), 2U);
}

TEST(TraceUploaderTest, SurvivesAUrlThatDoesNotParse) {
  ManagerWorld world;
  world.configure(ManagerWorld::kTraceManager);
  world.manager->configureUserId("u2");
  world.manager->identity().setServerUrl("not a url/");
  world.time->advance(30s);
  EXPECT_EQ(world.http->countTo(ManagerWorld::kTracingPath), 0U);
  world.manager->identity().setServerUrl(ManagerWorld::kServer);
  world.time->advance(30s);
  EXPECT_EQ(world.http->countTo(ManagerWorld::kTracingPath), 1U);
}

}  // namespace
}  // namespace quorvance
