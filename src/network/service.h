#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

#include "diagnostics/report_keeper.h"

namespace quorvance {

enum class Service {
  getDeviceId,
  getSdkConfiguration,
  sendSessionData,
  sendCheckpointEvent,
  getCheckpointRisk,
  updateTransactionResult,
  sendScreenListenerEvent,
  biometricData,
  sendBiometricImage,
  tracingData,
  errorLogging,
  crashLogging,
  activityMap,
  thirdPartyCacheEnrichment,
};

struct ServiceRow {
  /// Glued to the server's URL as it stands. The server routes on the doubled slashes.
  std::string_view path;
  /// Whether a failed call files a communication-error report.
  bool reportErrors;
};

inline constexpr std::array<ServiceRow, 14> kServiceRows = {{
    {"qrsk-med/3.0//GetDeviceID/", false},
    {"qrsk-med/3.0/getSdkConfiguration/", false},
    {"qrsk-med/3.0/SendSessionData/", false},
    {"qrsk-med/3.0/SendCheckpointEvent/", true},
    {"qrsk-med/3.0/GetCheckpointRisk/", true},
    {"qrsk-med/3.0//UpdateTransactionResult/", true},
    {"qrsk-med/3.0/sendScreenListenerEvent/", false},
    {"qrsk-med/3.0/BiometricData/", true},
    {"qrsk-med/3.0/SendBiometricImage/", false},
    {"qrsk-med/3.0/TracingData/", false},
    {"qrsk-med/3.0/ErrorLogging/", false},
    {"qrsk-med/3.0/CrashLogging/", true},
    {"qrsk-med/3.0/ActivityMap/", false},
    {"qrsk-med/3.0/ThirdPartyCacheEnrichment/", false},
}};

constexpr const ServiceRow& rowOf(Service service) {
  return kServiceRows[static_cast<std::size_t>(service)];
}

/// Where the stored reports of a category go.
constexpr Service serviceOf(ReportCategory category) {
  constexpr std::array<Service, 4> kServices = {Service::biometricData, Service::crashLogging,
                                                Service::errorLogging, Service::activityMap};
  return kServices[static_cast<std::size_t>(category)];
}

}  // namespace quorvance
