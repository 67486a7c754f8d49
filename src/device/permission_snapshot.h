#pragma once

#include <vector>

#include "quorvance/mobile_permission.h"
#include "quorvance/platform/authorization.h"

namespace quorvance {

/// The user's answers at one moment. What the platform could not tell counts as refused; without
/// any source location services count as off.
struct PermissionSnapshot {
  bool locationServicesEnabled = false;
  AuthorizationStatus location = AuthorizationStatus::notDetermined;
  AuthorizationStatus photos = AuthorizationStatus::notDetermined;
  AuthorizationStatus contacts = AuthorizationStatus::notDetermined;
  AuthorizationStatus camera = AuthorizationStatus::notDetermined;
  AuthorizationStatus events = AuthorizationStatus::notDetermined;
  AuthorizationStatus reminders = AuthorizationStatus::notDetermined;

  /// Asks for every subject, in the order of the members.
  static PermissionSnapshot take(AuthorizationSource& source);

  /// Authorised at any time or while in use.
  bool mayLocate() const;
};

/// Whether the kind is granted now; asks for its subject alone. False for a number outside the
/// vocabulary.
bool isAuthorized(AuthorizationSource& source, MobilePermission permission);

struct PermissionStatus {
  std::vector<MobilePermission> authorized;
  std::vector<MobilePermission> denied;
};

/// Location first, then photos, contacts, camera, events, reminders. A refused location is refused
/// twice (in use, then always); with location services off it is not mentioned at all.
PermissionStatus permissionStatus(const PermissionSnapshot& snapshot);

}  // namespace quorvance
