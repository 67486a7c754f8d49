#pragma once

// What the user allows this application, and the place of the device where it is allowed.

#include <memory>

#include "platform/linux/bus/geo_clue.h"
#include "platform/linux/bus/permission_store.h"
#include "platform/linux/permissions/camera_devices.h"
#include "quorvance/platform/authorization.h"

namespace quorvance {

/// Where the answers come from; members of the host may be null.
struct PermissionSources {
  std::shared_ptr<HostAuthorization> host;
  std::shared_ptr<LocationSource> hostLocation;
  std::shared_ptr<PermissionStore> store;
  std::shared_ptr<GeoClue> geoClue;
  /// Outside of sandboxes, where the rights of the devices decide.
  std::shared_ptr<CameraDevices> cameras;
};

/// The host answers first. Beyond that Linux knows of camera and location alone; contacts,
/// calendar, reminders and photos have no authority here, so they are not determined. Location
/// services are on where the host has its own source or the system's service is on. Any thread,
/// from memory.
class LinuxAuthorization : public AuthorizationSource {
 public:
  explicit LinuxAuthorization(PermissionSources sources) : sources_(std::move(sources)) {}

  bool locationServicesEnabled() override;
  AuthorizationStatus status(AuthorizationSubject subject) override;
  bool hasRead() override;
  std::string origin(AuthorizationSubject subject) const override;

 private:
  AuthorizationStatus systemStatus(AuthorizationSubject subject);

  const PermissionSources sources_;
};

/// The host's own place first, then the system's. Any thread, from memory.
class LinuxLocation : public LocationSource {
 public:
  explicit LinuxLocation(PermissionSources sources) : sources_(std::move(sources)) {}

  std::optional<LocationFix> lastFix() override;

 private:
  const PermissionSources sources_;
};

}  // namespace quorvance
