#include "device/permission_picture.h"

#include <gtest/gtest.h>

#include <utility>

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
  PermissionStatus status = permissionStatus(PermissionPicture::readFrom(source));
  EXPECT_EQ(joinedWords(status.authorized), "");
  EXPECT_EQ(joinedWords(status.denied),
            "AUTHORIZED_WHEN_IN_USE AUTHORIZED_ALWAYS PHOTO READ_CONTACTS CAMERA CALENDAR "
            "REMINDER ");
  for (const Subject subject : {Subject::location, Subject::photos, Subject::contacts,
                                Subject::camera, Subject::events, Subject::reminders}) {
    source.answers[subject] = Status::authorized;
  }
  status = permissionStatus(PermissionPicture::readFrom(source));
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
    auto picture = PermissionPicture::readFrom(source);
    const std::string granted = raw == 3   ? "AUTHORIZED_ALWAYS "
                                : raw == 4 ? "AUTHORIZED_WHEN_IN_USE "
                                           : "";
    EXPECT_EQ(joinedWords(permissionStatus(picture).authorized), granted);
    EXPECT_EQ(joinedWords(permissionStatus(picture).denied),
              (granted.empty() ? refused : "") + others);
    EXPECT_EQ(picture.mayLocate(), !granted.empty());
    picture.locationServicesEnabled = false;
    EXPECT_EQ(joinedWords(permissionStatus(picture).authorized), "");
    EXPECT_EQ(joinedWords(permissionStatus(picture).denied), others);
  }
}

// Also "while in use" (4), which only a location knows, and "restricted" (1).
TEST(PermissionStatusTest, EveryStatusButAuthorizedIsARefusal) {
  const std::vector<std::pair<Subject, MobilePermission>> rows = {
      {Subject::photos, MobilePermission::PHOTO},
      {Subject::contacts, MobilePermission::READ_CONTACTS},
      {Subject::camera, MobilePermission::CAMERA},
      {Subject::events, MobilePermission::CALENDAR},
      {Subject::reminders, MobilePermission::REMINDER}};
  for (const auto& [subject, permission] : rows) {
    for (int raw = 0; raw <= 4; ++raw) {
      FakeAuthorization source;
      source.answers[subject] = static_cast<Status>(raw);
      const auto picture = PermissionPicture::readFrom(source);
      const std::string word = MobilePermissionToString::toString(permission) + " ";
      EXPECT_EQ(joinedWords(permissionStatus(picture).authorized), raw == 3 ? word : "");
      EXPECT_EQ(picture.isAuthorized(permission), raw == 3);
    }
  }
}

}  // namespace
}  // namespace quorvance
