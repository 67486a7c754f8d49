#pragma once

#include "quorvance/standard_library.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "quorvance/verdict.h"

#pragma GCC visibility push(default)

namespace quorvance {

/// What became of reports (crashes, failed calls, activities) in this run of the process. Those
/// that a dying process writes are not counted.
struct ReportCounts {
  std::uint64_t stored = 0;
  /// Taken by the server; also of earlier runs.
  std::uint64_t sent = 0;
  /// Dropped: there were as many of that kind as are kept.
  std::uint64_t droppedFull = 0;
  /// Dropped: too many waited for a disk that does not answer.
  std::uint64_t droppedWaiting = 0;
  /// Dropped: no folder, no room, or a report that cannot be written.
  std::uint64_t droppedUnwritten = 0;
  /// Set aside, since nobody can read them.
  std::uint64_t unreadable = 0;
};

/// How the library stands with its server. A copy, of one moment as far as each member goes.
struct DeliveryStatus {
  using Time = std::chrono::system_clock::time_point;

  struct Failure {
    Time time;
    /// Never `answered`.
    VerdictReason reason = VerdictReason::givenUp;
    /// Of the server's reply; absent when none came.
    std::optional<int> httpStatus;
    /// The last word of the call's path, "GetCheckpointRisk".
    std::string service;
  };

  /// A configuration has come in this run.
  bool isConfigured = false;
  /// There is a device identifier, of this run or an earlier one.
  bool hasDeviceIdentifier = false;
  /// The server has accepted the running session.
  bool isSessionAccepted = false;
  bool isShutDown = false;
  /// Why the server's URL cannot work, in words, as far as can be seen without asking a network;
  /// absent when nothing speaks against it.
  std::optional<std::string> urlFault;
  /// Of the manager's whole context, all services; absent before the first one.
  std::optional<Time> lastSuccess;
  std::optional<Failure> lastFailure;
  /// As QuorvanceManager::pending().
  std::size_t pending = 0;
  /// Calls that the host's beforeSend has kept from being sent, be it by what it threw.
  std::uint64_t keptBack = 0;
  ReportCounts reports;
};

}  // namespace quorvance

#pragma GCC visibility pop
