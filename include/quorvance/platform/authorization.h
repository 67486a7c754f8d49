#pragma once

#include <optional>

#pragma GCC visibility push(default)

namespace quorvance {

/// What an application may be allowed to use.
enum class AuthorizationSubject { location, photos, contacts, camera, events, reminders };

/// The user's answer; the numbers are those that the permission rules were written with.
enum class AuthorizationStatus {
  notDetermined = 0,
  restricted = 1,
  denied = 2,
  authorized = 3,
  /// Location only.
  authorizedWhenInUse = 4,
};

/// The user's permissions, read on the fact lane. Throws nothing.
class AuthorizationSource {
 public:
  virtual ~AuthorizationSource() = default;
  virtual bool locationServicesEnabled() = 0;
  virtual AuthorizationStatus status(AuthorizationSubject subject) = 0;
};

/// A position fix; what the receiver does not supply stays unset.
struct LocationFix {
  /// Metres above sea level.
  std::optional<double> altitude;
  /// Degrees.
  std::optional<double> latitude;
  std::optional<double> longitude;
  /// Horizontal accuracy in metres.
  std::optional<double> accuracy;
};

/// The last known position, read on the fact lane and only with the user's permission. Throws
/// nothing.
class LocationSource {
 public:
  virtual ~LocationSource() = default;
  virtual std::optional<LocationFix> lastFix() = 0;
};

}  // namespace quorvance

#pragma GCC visibility pop
