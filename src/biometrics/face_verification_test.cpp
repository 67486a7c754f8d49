#include "biometrics/face_verification.h"

#include "biometrics/screen_world_test_support.h"

namespace quorvance {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// All that face verification asks for is there, and so is a scanned image of "u1".
struct FaceWorld : ScreenWorld {
  FaceWorld() {
    config = SdkConfig{};
    config.faceVerificationDelay = 0;
    authorization->answers[AuthorizationSubject::camera] = AuthorizationStatus::authorized;
    face->hasImage = true;
    state->write(StoredKey::userId, std::string("u1"));
  }

  /// A further listener, and what follows of it in the background.
  void beginAnother() {
    CapturingScreenListener::make(services, owner, ScreenListenerType::GENERAL, 1, view);
    time->run();
  }
  void reply(std::optional<Json> output) {
    ResponceObject response;
    response.output = std::move(output);
    const ReplyHandler handler = owner->waiting.back();
    owner->waiting.pop_back();
    handler.complete(response);
  }
};

TEST(FaceVerificationTest, ConfigurationCameraAndControllerDecideWhatHappens) {
  const struct {
    const char* what;
    std::function<void(FaceWorld&)> change;
    std::size_t uploads;
    int captures;
  } kCases[] = {
      {"an image", [](FaceWorld&) {}, 1, 0},
      {"no delay", [](FaceWorld& w) { w.config.faceVerificationDelay.reset(); }, 0, 0},
      {"a negative delay", [](FaceWorld& w) { w.config.faceVerificationDelay = -1; }, 0, 0},
      {"camera in use alone",
       [](FaceWorld& w) {
         w.authorization->answers[AuthorizationSubject::camera] =
             AuthorizationStatus::authorizedWhenInUse;
       },
       0, 0},
      {"no permissions", [](FaceWorld& w) { w.authorization = nullptr; }, 0, 0},
      {"no controller", [](FaceWorld& w) { w.face = nullptr; }, 0, 0},
      {"verified already", [](FaceWorld& w) { w.face->isVerified = true; }, 0, 0},
      {"being verified", [](FaceWorld& w) { w.face->isVerifying = true; }, 0, 0},
      {"nobody signed in",
       [](FaceWorld& w) { w.state->write(StoredKey::userId, std::string("UNKNOWN")); }, 0, 0},
      {"no image", [](FaceWorld& w) { w.face->hasImage = false; }, 0, 1},
      {"no image, verified once",
       [](FaceWorld& w) {
         w.face->hasImage = false;
         w.face->isVerified = true;
       },
       0, 1},
      {"no image, being verified",
       [](FaceWorld& w) {
         w.face->hasImage = false;
         w.face->isVerifying = true;
       },
       0, 0},
      {"the image gone meanwhile", [](FaceWorld& w) { w.face->jpeg.reset(); }, 0, 0},
  };
  for (const auto& one : kCases) {
    FaceWorld world;
    const auto face = world.face;
    one.change(world);
    world.begin();
    EXPECT_EQ(face->quality, std::nullopt) << "encoded on the host's thread";
    world.time->run();
    EXPECT_EQ(world.owner->bodies.size(), one.uploads) << one.what;
    EXPECT_EQ(face->captures, one.captures) << one.what;
  }
}

TEST(FaceVerificationTest, ImageIsEncodedInTheBackgroundAndSentAsTheHostPutIt) {
  FaceWorld world;
  world.face->jpeg = std::string(49, '\0');
  // The host's encoding may be slow: verdicts, reports and facts wait for none of it.
  for (const WorkLane lane : {WorkLane::completions, WorkLane::files, WorkLane::facts}) {
    world.time->hold(lane);
  }
  const DebugLines debug;
  world.begin();
  world.time->run();
  EXPECT_TRUE(debug.contain("sendImageWithUserId"));
  EXPECT_THAT(world.noted(), ElementsAre("send image"));
  EXPECT_EQ(world.face->quality, 100.0);
  const std::string session = *world.state->readText(StoredKey::sessionId);
  EXPECT_EQ(*findText(world.owner->bodies.at(0), "face"),
            "u1 " + session + " " + std::string(64, 'A') + "\r\nAA==");
  EXPECT_EQ(world.owner->bodies[0].size(), 1U);
}

TEST(FaceVerificationTest, OneUploadAtATimeOfASessionUntilItsReplyOrItsEnd) {
  FaceWorld world;
  world.begin();
  world.time->run();
  world.beginAnother();
  EXPECT_EQ(world.owner->bodies.size(), 1U);
  world.reply(parsedJson(R"({"match":true})"));
  world.beginAnother();
  EXPECT_EQ(world.owner->bodies.size(), 2U);
  world.reply(std::nullopt);
  world.beginAnother();
  EXPECT_EQ(world.owner->bodies.size(), 3U);
  world.owner->waiting.clear();  // never answered, by contract
  world.time->run();
  world.beginAnother();
  EXPECT_EQ(world.owner->bodies.size(), 4U);
  EXPECT_THAT(world.face->replies, ElementsAre(R"({"match":true})", "null", "null"));
  // Whoever comes after a logout does not wait for the image of who has gone.
  world.state->startNewSession();
  world.state->write(StoredKey::userId, std::string("u2"));
  world.beginAnother();
  EXPECT_EQ(world.owner->bodies.size(), 5U);
}

TEST(FaceVerificationTest, ReplyOfAUserWhoHasGoneIsNotHandedOn) {
  FaceWorld world;
  world.begin();
  world.time->run();
  world.state->write(StoredKey::userId, std::string("u2"));
  world.reply(Json::object());
  world.beginAnother();
  // The same user again, after a logout.
  world.state->startNewSession();
  world.reply(Json::object());
  EXPECT_THAT(world.face->replies, IsEmpty());
  world.beginAnother();
  world.reply(Json::object());
  EXPECT_THAT(world.face->replies, ElementsAre("{}"));
}

TEST(FaceVerificationDeathTest, UserThatCannotBeReadStopsTheProcess) {
  FaceWorld world;
  world.store->putOther("user_id");
  EXPECT_DEATH(world.begin(), "fatal.*stored user");
}

}  // namespace
}  // namespace quorvance
