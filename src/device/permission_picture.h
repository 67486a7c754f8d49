#pragma once

#include <optional>
#include <vector>

#include "quorvance/mobile_permission.h"
#include "quorvance/platform/authorization.h"

namespace quorvance {

/// The user's answers at one moment. What the platform could not tell counts as refused; without
/// any source location services count as off.
struct PermissionPicture {
  bool locationServicesEnabled = false;
  AuthorizationStatus location = AuthorizationStatus::notDetermined;
  AuthorizationStatus photos = AuthorizationStatus::notDetermined;
  AuthorizationStatus contacts = AuthorizationStatus::notDetermined;
  AuthorizationStatus camera = AuthorizationStatus::notDetermined;
  AuthorizationStatus events = AuthorizationStatus::notDetermined;
  AuthorizationStatus reminders = AuthorizationStatus::notDetermined;

  /// Waits for the platform: fact lane only.
  static PermissionPicture readFrom(AuthorizationSource& source);

  /// Authorised at any time or while in use.
  bool mayLocate() const;
  /// False for a number outside the vocabulary.
  bool isAuthorized(MobilePermission permission) const;
};

struct PermissionStatus {
  std::vector<MobilePermission> authorized;
  std::vector<MobilePermission> denied;
};

/// Location first, then photos, contacts, camera, events, reminders. A refused location is refused
/// twice (in use, then always); with location services off it is not mentioned at all.
PermissionStatus permissionStatus(const PermissionPicture& picture);

}  // namespace quorvance
