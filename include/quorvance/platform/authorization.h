#pragma once

#include "quorvance/standard_library.h"

#include <optional>
#include <string>

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

/// The user's permissions as they stand now. Host calls ask it, so it answers at once, from memory,
/// from any thread, and throws nothing. One that learns of them over a bus keeps its own snapshot
/// fresh in the background, and until its first reading has ended it answers that location services
/// are on and every status is not determined.
class AuthorizationSource {
 public:
  virtual ~AuthorizationSource() = default;
  virtual bool locationServicesEnabled() = 0;
  virtual AuthorizationStatus status(AuthorizationSubject subject) = 0;
  /// Whether the first reading has ended.
  virtual bool hasRead() { return true; }
  /// Where the answer comes from, for people who review what is collected.
  virtual std::string origin(AuthorizationSubject subject) const {
    static_cast<void>(subject);
    return "the application's own source";
  }
};

/// What only the application can know of its user's answers: those of its own dialogues, or of
/// services that the platform has no authority for (contacts, calendar, reminders, photos). Called
/// as an AuthorizationSource is.
class HostAuthorization {
 public:
  virtual ~HostAuthorization() = default;
  /// Absent where the platform is to answer.
  virtual std::optional<AuthorizationStatus> status(AuthorizationSubject subject) = 0;
};

/// A position fix; what the receiver does not supply stays unset.
struct LocationFix {
  /// Metres above sea level.
  std::optional<double> altitude{};
  /// Degrees.
  std::optional<double> latitude{};
  std::optional<double> longitude{};
  /// Horizontal accuracy in metres.
  std::optional<double> accuracy{};
};

/// The last known position. Asked with the user's permission only; answers as an
/// AuthorizationSource does: at once, from memory, from any thread, throwing nothing.
class LocationSource {
 public:
  virtual ~LocationSource() = default;
  /// Absent while no fix is known.
  virtual std::optional<LocationFix> lastFix() = 0;
};

}  // namespace quorvance

#pragma GCC visibility pop
