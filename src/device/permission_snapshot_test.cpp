#include "device/permission_snapshot.h"

#include <gtest/gtest.h>

#include <tuple>

#include "platform/testing/fake_device.h"

namespace quorvance {
namespace {

using Subject = AuthorizationSubject;
using Status = AuthorizationStatus;

std::string joinedWords(const std::vector<MobilePermission>& permissions) {
  std::string words;
  for (const MobilePermission permission : permissions) {
    words += MobilePermissionToString::toString(permission) + " ";
  }
  return words;
}

TEST(PermissionStatusTest, ListsTheKindsInTheOrderOfAsking) {
  FakeAuthorization source;
  PermissionStatus status = permissionStatus(PermissionSnapshot::take(source));
  EXPECT_EQ(joinedWords(status.authorized), "");
  EXPECT_EQ(joinedWords(status.denied),
            "AUTHORIZED_WHEN_IN_USE AUTHORIZED_ALWAYS PHOTO READ_CONTACTS CAMERA CALENDAR "
            "REMINDER ");
  for (const Subject subject : {Subject::location, Subject::photos, Subject::contacts,
                                Subject::camera, Subject::events, Subject::reminders}) {
    source.answers[subject] = Status::authorized;
  }
  status = permissionStatus(PermissionSnapshot::take(source));
  EXPECT_EQ(joinedWords(status.authorized),
            "AUTHORIZED_ALWAYS PHOTO READ_CONTACTS CAMERA CALENDAR REMINDER ");
  EXPECT_EQ(joinedWords(status.denied), "");
}

TEST(PermissionStatusTest, ALocationIsMentionedByItsStatusUnlessServicesAreOff) {
  const std::string refused = "AUTHORIZED_WHEN_IN_USE AUTHORIZED_ALWAYS ";
  const std::string others = "PHOTO READ_CONTACTS CAMERA CALENDAR REMINDER ";
  for (int raw = 0; raw <= 4; ++raw) {
    FakeAuthorization source;
    source.answers[Subject::location] = static_cast<Status>(raw);
    auto snapshot = PermissionSnapshot::take(source);
    const std::string granted = raw == 3   ? "AUTHORIZED_ALWAYS "
                                : raw == 4 ? "AUTHORIZED_WHEN_IN_USE "
                                           : "";
    EXPECT_EQ(joinedWords(permissionStatus(snapshot).authorized), granted);
    EXPECT_EQ(joinedWords(permissionStatus(snapshot).denied),
              (granted.empty() ? refused : "") + others);
    EXPECT_EQ(snapshot.mayLocate(), !granted.empty());
    snapshot.locationServicesEnabled = false;
    EXPECT_EQ(joinedWords(permissionStatus(snapshot).authorized), "");
    EXPECT_EQ(joinedWords(permissionStatus(snapshot).denied), others);
  }
}

// Writes down what it is asked for.
class AskedAuthorization : public FakeAuthorization {
 public:
  std::vector<Subject> asked;
  Status status(Subject subject) override {
    asked.push_back(subject);
    return FakeAuthorization::status(subject);
  }
};

// Also "while in use" (4), which only a location knows, and "restricted" (1).
TEST(PermissionStatusTest, KindIsGrantedByItsOwnStatusAloneAndNothingElseIsAsked) {
  const std::vector<std::tuple<Subject, MobilePermission, int>> rows = {
      {Subject::photos, MobilePermission::PHOTO, 3},
      {Subject::contacts, MobilePermission::READ_CONTACTS, 3},
      {Subject::camera, MobilePermission::CAMERA, 3},
      {Subject::events, MobilePermission::CALENDAR, 3},
      {Subject::reminders, MobilePermission::REMINDER, 3},
      {Subject::location, MobilePermission::AUTHORIZED_ALWAYS, 3},
      {Subject::location, MobilePermission::AUTHORIZED_WHEN_IN_USE, 4}};
  for (const auto& [subject, permission, granting] : rows) {
    const std::string word = MobilePermissionToString::toString(permission) + " ";
    for (int raw = 0; raw <= 4; ++raw) {
      AskedAuthorization source;
      source.answers[subject] = static_cast<Status>(raw);
      EXPECT_EQ(isAuthorized(source, permission), raw == granting) << word << raw;
      EXPECT_EQ(source.asked, std::vector{subject}) << word;
      const auto status = permissionStatus(PermissionSnapshot::take(source));
      EXPECT_EQ(joinedWords(status.authorized) == word, raw == granting) << word << raw;
      source.isLocationOn = false;
      EXPECT_EQ(isAuthorized(source, permission), raw == granting && subject != Subject::location);
    }
  }
  AskedAuthorization source;
  EXPECT_FALSE(isAuthorized(source, static_cast<MobilePermission>(7)));
  EXPECT_TRUE(source.asked.empty());
}

}  // namespace
}  // namespace quorvance
