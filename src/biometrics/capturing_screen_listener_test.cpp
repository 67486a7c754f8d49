#include "biometrics/capturing_screen_listener.h"

#include <atomic>
#include <thread>

#include "biometrics/screen_world_test_support.h"

namespace quorvance {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

const CallList kStarts = {"start gravity", "start gyroscope", "start accelerometer"};
const CallList kStops = {"stop accelerometer", "stop gravity", "stop gyroscope",
                         "stop magnetometer"};

CallList joined(CallList calls, const CallList& more) {
  calls.insert(calls.end(), more.begin(), more.end());
  return calls;
}

void recordMotionLines(ScreenRecording& recording, std::size_t count) {
  LatestMotion latest;
  for (std::size_t i = 0; i < count; ++i) recording.addMotion(latest, 1, {}, false);
}

TEST(CapturingScreenListenerTest, CreationReadsItsTimesThenTellsStartThenTagsAndAddsARecognizer) {
  ScreenWorld world;
  world.view->add({}, 0);
  world.view->add({}, 7);
  world.view->add({}, 0);
  world.begin();
  // Cleared by begin(): a second listener of the same view finds its tags given.
  EXPECT_EQ(world.view->children[1]->tag(), 59000);
  EXPECT_EQ(world.view->children[2]->tag(), 7);
  EXPECT_EQ(world.view->children[3]->tag(), 59001);
  world.view->add({}, 0);
  CapturingScreenListener::make(world.services, world.owner, ScreenListenerType::PINCODE, 7,
                                world.view);
  EXPECT_THAT(world.noted(), ElementsAre("clock", "clock", "clock",
                                         "prepare qrsk-med/3.0/sendScreenListenerEvent/",
                                         "send qrsk-med/3.0/sendScreenListenerEvent/", "look",
                                         "tag 59000", "add recognizer"));
  EXPECT_EQ(compactText(world.owner->bodies.at(1)),
            R"({"screenListenerEvent":{"screenListenerType":"PINCODE","screenId":7,)"
            R"("timestamp":7000,"action":"START"}})");
}

TEST(CapturingScreenListenerTest, ConfigurationDecidesWhatCreationDoes) {
  const struct {
    std::optional<AppRunMode> mode;
    std::optional<bool> biometrics;
    std::size_t events;
    std::size_t recognizers;
  } kCases[] = {{AppRunMode::DEVELOPMENT, false, 1, 0},
                {AppRunMode::DEVELOPMENT, std::nullopt, 1, 0},
                {AppRunMode::PRODUCTION, true, 0, 1},
                {AppRunMode::DEMO, true, 0, 1},
                {std::nullopt, true, 0, 1}};
  for (const auto& one : kCases) {
    ScreenWorld world;
    world.config.appRunMode = one.mode;
    world.config.enableBioCollection = one.biometrics;
    world.view->add({}, 0);
    world.begin();
    EXPECT_EQ(world.owner->bodies.size(), one.events);
    EXPECT_EQ(world.view->recognizers.size(), one.recognizers);
    EXPECT_EQ(world.view->children[1]->tag() != 0, one.recognizers > 0);
    EXPECT_FALSE(world.motion->isRunning(MotionSensor::accelerometer));
  }
  ScreenWorld without;
  without.view = nullptr;
  without.begin();
  EXPECT_EQ(without.owner->bodies.size(), 1U);
}

TEST(CapturingScreenListenerTest, EachStateHasItsEffectsInOrder) {
  ScreenWorld world;
  world.begin();
  EXPECT_THAT(world.notedOf(GestureState::possible), IsEmpty());
  EXPECT_THAT(world.notedOf(GestureState::began),
              ElementsAreArray(joined(kStarts, {"clock", "clock", "look"})));
  EXPECT_THAT(world.notedOf(GestureState::changed), ElementsAre("clock", "look"));
  world.move(MotionSensor::accelerometer, {});
  EXPECT_THAT(world.notedOf(GestureState::failed), IsEmpty());
  EXPECT_THAT(world.notedOf(static_cast<GestureState>(9)), IsEmpty());
  EXPECT_THAT(world.notedOf(GestureState::cancelled), ElementsAreArray(kStops));
  EXPECT_EQ(world.recording().currentTouch().size(), 2U);
  EXPECT_EQ(world.recording().currentTouchSensors(0).size(), 1U);
  EXPECT_THAT(world.notedOf(GestureState::ended),
              ElementsAreArray(joined({"clock", "look"}, kStops)));
  EXPECT_THAT(world.recording().currentTouch(), IsEmpty());
  EXPECT_THAT(world.recording().currentTouchSensors(0), IsEmpty());
  // Four clock readings of the creation, two of the press, one of each further sample and row.
  EXPECT_THAT(world.recording().eventList(),
              ElementsAre("[6000,10.0,10.0,8.0,0.5,70,1]", "[7000,10.0,10.0,8.0,0.5,70,0]",
                          "[9000,10.0,10.0,8.0,0.5,70,-1]"));
}

TEST(CapturingScreenListenerTest, SampleWithoutAViewLeavesItsTouchRowAndNothingMore) {
  ScreenWorld world;
  world.begin();
  const DebugLines debug;
  const GesturePoint nowhere{50, 20};
  EXPECT_THAT(world.notedOf(GestureState::began, nowhere),
              ElementsAre("start gravity", "start gyroscope", "start magnetometer",
                          "start accelerometer", "clock", "clock", "look"));
  world.notedOf(GestureState::changed, nowhere);
  // An end is carried through all the same.
  world.move(MotionSensor::accelerometer, {});
  EXPECT_THAT(world.notedOf(GestureState::ended, nowhere),
              ElementsAreArray(joined({"clock", "look"}, kStops)));
  EXPECT_THAT(world.recording().currentTouchSensors(0), IsEmpty());
  const Json rows = world.rows().getJson();
  EXPECT_EQ(compactText(*findArray(rows, "eventList")),
            "[[50.0,20.0,8.0,0.5,1.0],[50.0,20.0,8.0,0.5,0.0],[50.0,20.0,8.0,0.5,-1.0]]");
  EXPECT_EQ(compactText(*findArray(rows, "eventListTS")), "[]");
  EXPECT_THAT(world.recording().eventList(), IsEmpty());
  EXPECT_FALSE(debug.contain("beganPanPress"));
  EXPECT_FALSE(debug.contain("changedPanPress"));
  world.view->touch(GestureState::began, {1.5, 1});
  EXPECT_THAT(debug.lines(), testing::IsSupersetOf(
                                 {"data sensors and touchs 0   1", "endedPanPress", "beganPanPress",
                                  "coordinates: x = 1.5, y = 1.0, force = 0.5, majorRadius = 8.0",
                                  "[11000,1.5,1.0,8.0,0.5,70,1]"}));
}

TEST(CapturingScreenListenerTest, FullListsStopTheSensorsAndDropTheCallbackOfAnyState) {
  for (const std::size_t lines : {399U, 400U, 401U}) {
    for (const GestureState touch :
         {GestureState::possible, GestureState::began, GestureState::changed, GestureState::ended,
          GestureState::cancelled, GestureState::failed}) {
      ScreenWorld world;
      world.begin();
      world.view->touch(GestureState::began, {10, 10});
      recordMotionLines(world.recording(), lines - 1);
      const bool isFull = lines > 399;
      const CallList noted = world.notedOf(touch);
      EXPECT_EQ(noted == kStops, isFull || touch == GestureState::cancelled) << lines;
      EXPECT_EQ(world.recording().currentTouch().empty(), !isFull && touch == GestureState::ended);
      const bool isSampled = touch == GestureState::began || touch == GestureState::changed ||
                             touch == GestureState::ended;
      EXPECT_EQ(world.recording().eventList().size(), !isFull && isSampled ? 2U : 1U) << lines;
      // A dropped callback takes no snapshot either.
      const bool isPaused =
          !isFull && (touch == GestureState::ended || touch == GestureState::cancelled);
      EXPECT_EQ(world.recording().takeSnapshotRows({}).has_value(), isPaused) << lines;
    }
  }
  ScreenWorld world;
  world.begin();
  recordMotionLines(world.recording(), 400);
  world.listener->resumeListen();
  world.move(MotionSensor::accelerometer, {});
  EXPECT_EQ(world.recording().counts().motionLines, 401U)
      << "the bound is checked by touches alone";
}

TEST(CapturingScreenListenerTest, FinishSendsEndStopsStoresAndUploadsOnTheMainQueue) {
  ScreenWorld world;
  world.config.tracingDataQvData->levelQvManager = true;
  world.begin();
  world.view->touch(GestureState::began, {10, 10});
  world.move(MotionSensor::accelerometer, {0.5, 0, -1});
  // A logout meanwhile.
  world.state->write(StoredKey::userId, std::string("u2"));
  world.state->write(StoredKey::deviceId, std::string("d1"));
  world.state->startNewSession();
  world.owner->user.reset();
  world.noted();
  world.listener->finishScreenListener();
  EXPECT_EQ(world.tracing->size(), 2U) << "the entry ends before the work begins";
  EXPECT_THAT(world.noted(), ElementsAre("clock", "clock"));
  const std::weak_ptr<CapturingScreenListener> listener = world.listener;
  world.listener = nullptr;
  EXPECT_TRUE(listener.expired()) << "queued work must not hold the host's views";
  const DebugLines debug;
  world.time->run();
  EXPECT_TRUE(debug.contain("Delta time Collect Bio: 1000"));
  EXPECT_THAT(world.noted(), ElementsAreArray(joined(
                                 joined({"clock", "prepare qrsk-med/3.0/sendScreenListenerEvent/",
                                         "send qrsk-med/3.0/sendScreenListenerEvent/"},
                                        kStops),
                                 {"clock", "report", "clock", "prepare qrsk-med/3.0/BiometricData/",
                                  "send qrsk-med/3.0/BiometricData/"})));
  const std::string session = *world.state->readText(StoredKey::sessionId);
  const Json& body = world.owner->bodies.back();
  EXPECT_EQ(compactText(body),
            R"({"bio_sensor_event_data":)" +
                compactText(*findObject(body, "bio_sensor_event_data")) +
                R"(,"session":{"idSession":")" + session + R"(","timeSession":9000},)" +
                R"("deviceId":"d1","uuid":"0F1E2D3C-4B5A-4978-8796-A5B4C3D2E1F0"})");
  EXPECT_EQ(compactText(*parseJson(world.documents->files.begin()->second)),
            R"({"appID":"com.bank.app","appVer":"4.2","deviceId":"d1","userId":"UNKNOWN",)"
            R"("sessionId":"0F1E2D3C-4B5A-4978-8796-A5B4C3D2E1F0-3000","screenType":"PINCODE",)"
            R"("screenId":"7","timestampStart":2000,"timestampEnd":13000})");
}

TEST(CapturingScreenListenerTest, SecondFinishSendsAllOfItAgainAndMore) {
  ScreenWorld world;
  world.begin();
  world.view->touch(GestureState::began, {10, 10});
  world.finish();
  // Nothing detaches the recognizer.
  EXPECT_FALSE(world.motion->isRunning(MotionSensor::accelerometer));
  world.view->touch(GestureState::began, {11, 11});
  EXPECT_TRUE(world.motion->isRunning(MotionSensor::accelerometer));
  world.finish();
  ASSERT_EQ(world.owner->bodies.size(), 5U);
  const Json* first = findObject(world.owner->bodies[2], "bio_sensor_event_data");
  const Json* second = findObject(world.owner->bodies[4], "bio_sensor_event_data");
  EXPECT_EQ(findArray(*first, "eventList")->size(), 1U);
  EXPECT_EQ(findArray(*second, "eventList")->size(), 2U);
  EXPECT_EQ(*findText(world.owner->bodies[4], "userId"), "u1");
  EXPECT_EQ(world.documents->count("activity"), 2U);
}

TEST(CapturingScreenListenerTest, ScreenWithoutTextLinesIsRecordedAsAnActivityAndNotUploaded) {
  ScreenWorld world;
  world.begin();
  // A touch outside of all views has no text line.
  world.view->touch(GestureState::began, {50, 20});
  const DebugLines debug;
  world.finish();
  world.config.activityMap = false;
  world.state->replaceSdkConfig(world.config);
  world.finish();
  EXPECT_EQ(world.owner->bodies.size(), 3U) << "START and two END alone";
  EXPECT_EQ(world.documents->count("activity"), 1U);
  EXPECT_TRUE(debug.contain("file not saved, with empty eventList & sensorsData"));
}

TEST(CapturingScreenListenerTest, DroppedListenerStopsItsSensorsAndItsRecognizerDoesNothing) {
  ScreenWorld world;
  world.begin();
  world.view->touch(GestureState::began, {10, 10});
  world.noted();
  world.listener = nullptr;
  EXPECT_THAT(world.noted(), ElementsAreArray(kStops));
  EXPECT_THAT(world.notedOf(GestureState::changed), IsEmpty());
}

// For the sanitizers: samples come on two threads, the main queue runs on a third, and the host's
// thread touches, finishes and at last drops the listener in the middle of all of it.
TEST(CapturingScreenListenerTest, ListenerMayGoWhileSamplesArrive) {
  ScreenWorld world;
  world.motion->calls = nullptr;
  world.view->calls = nullptr;
  world.subview->calls = nullptr;
  world.state = std::make_shared<InnerQuorvanceData>(world.time, world.store, world.identity);
  world.begin();
  std::atomic<bool> isOver{false};
  std::atomic<std::uint64_t> delivered{0};
  std::vector<std::thread> threads;
  for (const MotionSensor sensor : {MotionSensor::accelerometer, MotionSensor::gyroscope}) {
    threads.emplace_back([&, sensor] {
      while (!isOver) {
        world.motion->deliverHere(sensor, MotionSample{1, 2, 3});
        ++delivered;
        delivered.notify_all();
      }
    });
  }
  threads.emplace_back([&] {
    while (!isOver) world.time->run();
  });
  const auto waitForSamples = [&](std::uint64_t count) {
    const std::uint64_t target = delivered + count;
    for (std::uint64_t now = delivered; now < target; now = delivered) delivered.wait(now);
  };
  for (int i = 0; i < 5; ++i) {
    world.view->touch(GestureState::began, {10, 10});
    waitForSamples(10);
    world.listener->finishScreenListener();
    world.view->touch(GestureState::ended, {10, 10});
    world.listener->resumeListen();
  }
  world.listener = nullptr;
  waitForSamples(10);
  isOver = true;
  for (std::thread& thread : threads) thread.join();
  world.time->run();
  EXPECT_FALSE(world.motion->isRunning(MotionSensor::accelerometer));
  EXPECT_EQ(world.documents->count("activity"), 5U);
}

TEST(CapturingScreenListenerDeathTest, ProgrammingErrorsStopTheProcess) {
  const auto finished = [](SdkConfig config) {
    ScreenWorld world;
    world.begin();
    world.state->replaceSdkConfig(config);
    world.finish();
  };
  SdkConfig config;
  config.tracingDataQvData.reset();
  EXPECT_DEATH(finished(config), "fatal.*trace level");
  config.tracingDataQvData.emplace().levelQvManager.reset();
  EXPECT_DEATH(finished(config), "fatal.*trace level");
  config = {};
  config.activityMap.reset();
  EXPECT_DEATH(finished(config), "fatal.*activities");
  ScreenWorld world;
  world.view = nullptr;
  world.begin();
  QuorvanceGestureRecognizer recognizer(nullptr);
  world.listener->handleTouches(recognizer);
  recognizer.setState(GestureState::ended, {});
  EXPECT_DEATH(world.listener->handleTouches(recognizer), "fatal.*without a view");
}

}  // namespace
}  // namespace quorvance
