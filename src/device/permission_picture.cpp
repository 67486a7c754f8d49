#include "device/permission_picture.h"

namespace quorvance {
namespace {

void addLocation(PermissionStatus& status, AuthorizationStatus location) {
  if (location == AuthorizationStatus::authorized) {
    status.authorized.push_back(MobilePermission::AUTHORIZED_ALWAYS);
  } else if (location == AuthorizationStatus::authorizedWhenInUse) {
    status.authorized.push_back(MobilePermission::AUTHORIZED_WHEN_IN_USE);
  } else {
    status.denied.push_back(MobilePermission::AUTHORIZED_WHEN_IN_USE);
    status.denied.push_back(MobilePermission::AUTHORIZED_ALWAYS);
  }
}

}  // namespace

PermissionPicture PermissionPicture::readFrom(AuthorizationSource& source) {
  PermissionPicture picture;
  picture.locationServicesEnabled = source.locationServicesEnabled();
  picture.location = source.status(AuthorizationSubject::location);
  picture.photos = source.status(AuthorizationSubject::photos);
  picture.contacts = source.status(AuthorizationSubject::contacts);
  picture.camera = source.status(AuthorizationSubject::camera);
  picture.events = source.status(AuthorizationSubject::events);
  picture.reminders = source.status(AuthorizationSubject::reminders);
  return picture;
}

bool PermissionPicture::mayLocate() const {
  return location == AuthorizationStatus::authorized ||
         location == AuthorizationStatus::authorizedWhenInUse;
}

bool PermissionPicture::isAuthorized(MobilePermission permission) const {
  switch (permission) {
    case MobilePermission::READ_CONTACTS:
      return contacts == AuthorizationStatus::authorized;
    case MobilePermission::AUTHORIZED_ALWAYS:
      return locationServicesEnabled && location == AuthorizationStatus::authorized;
    case MobilePermission::AUTHORIZED_WHEN_IN_USE:
      return locationServicesEnabled && location == AuthorizationStatus::authorizedWhenInUse;
    case MobilePermission::CAMERA:
      return camera == AuthorizationStatus::authorized;
    case MobilePermission::REMINDER:
      return reminders == AuthorizationStatus::authorized;
    case MobilePermission::CALENDAR:
      return events == AuthorizationStatus::authorized;
    case MobilePermission::PHOTO:
      return photos == AuthorizationStatus::authorized;
  }
  return false;
}

PermissionStatus permissionStatus(const PermissionPicture& picture) {
  PermissionStatus status;
  if (picture.locationServicesEnabled) addLocation(status, picture.location);
  const auto add = [&](AuthorizationStatus answer, MobilePermission permission) {
    const bool granted = answer == AuthorizationStatus::authorized;
    (granted ? status.authorized : status.denied).push_back(permission);
  };
  add(picture.photos, MobilePermission::PHOTO);
  add(picture.contacts, MobilePermission::READ_CONTACTS);
  add(picture.camera, MobilePermission::CAMERA);
  add(picture.events, MobilePermission::CALENDAR);
  add(picture.reminders, MobilePermission::REMINDER);
  return status;
}

}  // namespace quorvance
