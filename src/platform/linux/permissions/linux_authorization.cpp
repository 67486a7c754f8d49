#include "platform/linux/permissions/linux_authorization.h"

namespace quorvance {
namespace {

bool allowsLocation(AuthorizationStatus status) {
  return status == AuthorizationStatus::authorized ||
         status == AuthorizationStatus::authorizedWhenInUse;
}

}  // namespace

bool LinuxAuthorization::locationServicesEnabled() {
  if (sources_.hostLocation) return true;
  const LocationService service = sources_.geoClue->service();
  return service.isOn || !service.isRead;
}

AuthorizationStatus LinuxAuthorization::systemStatus(AuthorizationSubject subject) {
  const bool isLocation = subject == AuthorizationSubject::location;
  if (!isLocation && subject != AuthorizationSubject::camera) {
    return AuthorizationStatus::notDetermined;
  }
  const StoredPermissions stored = sources_.store->permissions();
  if (!stored.isRead) return AuthorizationStatus::notDetermined;
  if (isLocation) return stored.location;
  return stored.isSandboxed ? stored.camera : sources_.cameras->status();
}

AuthorizationStatus LinuxAuthorization::status(AuthorizationSubject subject) {
  const auto told = sources_.host ? sources_.host->status(subject) : std::nullopt;
  const AuthorizationStatus status = told.value_or(systemStatus(subject));
  // A place that the user no longer allows is followed no longer.
  if (subject == AuthorizationSubject::location && !allowsLocation(status)) {
    sources_.geoClue->want(false);
  }
  return status;
}

bool LinuxAuthorization::hasRead() {
  const StoredPermissions stored = sources_.store->permissions();
  return stored.isRead && (stored.isSandboxed || sources_.cameras->hasRead()) &&
         (sources_.hostLocation || sources_.geoClue->service().isRead);
}

std::string LinuxAuthorization::origin(AuthorizationSubject subject) const {
  const std::string origin = sources_.host ? "the application, else " : "";
  switch (subject) {
    case AuthorizationSubject::location:
      return origin + "D-Bus: permission store, GeoClue";
    case AuthorizationSubject::camera:
      return origin + "sandboxed: permission store, else access to /dev/video*";
    default:
      return sources_.host ? "the application" : "nothing on Linux, unless the application tells";
  }
}

std::optional<LocationFix> LinuxLocation::lastFix() {
  if (sources_.hostLocation) {
    if (auto fix = sources_.hostLocation->lastFix()) return fix;
  }
  sources_.geoClue->want(true);
  return sources_.geoClue->service().fix;
}

}  // namespace quorvance
