#include "device/permission_snapshot.h"

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

PermissionSnapshot PermissionSnapshot::take(AuthorizationSource& source) {
  PermissionSnapshot snapshot;
  snapshot.locationServicesEnabled = source.locationServicesEnabled();
  snapshot.location = source.status(AuthorizationSubject::location);
  snapshot.photos = source.status(AuthorizationSubject::photos);
  snapshot.contacts = source.status(AuthorizationSubject::contacts);
  snapshot.camera = source.status(AuthorizationSubject::camera);
  snapshot.events = source.status(AuthorizationSubject::events);
  snapshot.reminders = source.status(AuthorizationSubject::reminders);
  return snapshot;
}

bool PermissionSnapshot::mayLocate() const {
  return location == AuthorizationStatus::authorized ||
         location == AuthorizationStatus::authorizedWhenInUse;
}

bool isAuthorized(AuthorizationSource& source, MobilePermission permission) {
  const auto isAuthorizedFor = [&](AuthorizationSubject subject) {
    return source.status(subject) == AuthorizationStatus::authorized;
  };
  switch (permission) {
    case MobilePermission::READ_CONTACTS:
      return isAuthorizedFor(AuthorizationSubject::contacts);
    case MobilePermission::AUTHORIZED_ALWAYS:
      return source.locationServicesEnabled() && isAuthorizedFor(AuthorizationSubject::location);
    case MobilePermission::AUTHORIZED_WHEN_IN_USE:
      return source.locationServicesEnabled() && source.status(AuthorizationSubject::location) ==
                                                     AuthorizationStatus::authorizedWhenInUse;
    case MobilePermission::CAMERA:
      return isAuthorizedFor(AuthorizationSubject::camera);
    case MobilePermission::REMINDER:
      return isAuthorizedFor(AuthorizationSubject::reminders);
    case MobilePermission::CALENDAR:
      return isAuthorizedFor(AuthorizationSubject::events);
    case MobilePermission::PHOTO:
      return isAuthorizedFor(AuthorizationSubject::photos);
  }
  return false;
}

PermissionStatus permissionStatus(const PermissionSnapshot& snapshot) {
  PermissionStatus status;
  if (snapshot.locationServicesEnabled) addLocation(status, snapshot.location);
  const auto add = [&](AuthorizationStatus answer, MobilePermission permission) {
    const bool granted = answer == AuthorizationStatus::authorized;
    (granted ? status.authorized : status.denied).push_back(permission);
  };
  add(snapshot.photos, MobilePermission::PHOTO);
  add(snapshot.contacts, MobilePermission::READ_CONTACTS);
  add(snapshot.camera, MobilePermission::CAMERA);
  add(snapshot.events, MobilePermission::CALENDAR);
  add(snapshot.reminders, MobilePermission::REMINDER);
  return status;
}

}  // namespace quorvance
