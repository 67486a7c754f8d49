#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

#include "base/ordered_table.h"
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
  Service service;
  /// Glued to the server's URL as it stands. The server routes on the doubled slashes.
  std::string_view path;
  /// Whether a failed call files a communication-error report.
  bool reportErrors;
};

inline constexpr std::array<ServiceRow, 14> kServiceRows = {{
    {Service::getDeviceId, "qrsk-med/3.0//GetDeviceID/", false},
    {Service::getSdkConfiguration, "qrsk-med/3.0/getSdkConfiguration/", false},
    {Service::sendSessionData, "qrsk-med/3.0/SendSessionData/", false},
    {Service::sendCheckpointEvent, "qrsk-med/3.0/SendCheckpointEvent/", true},
    {Service::getCheckpointRisk, "qrsk-med/3.0/GetCheckpointRisk/", true},
    {Service::updateTransactionResult, "qrsk-med/3.0//UpdateTransactionResult/", true},
    {Service::sendScreenListenerEvent, "qrsk-med/3.0/sendScreenListenerEvent/", false},
    {Service::biometricData, "qrsk-med/3.0/BiometricData/", true},
    {Service::sendBiometricImage, "qrsk-med/3.0/SendBiometricImage/", false},
    {Service::tracingData, "qrsk-med/3.0/TracingData/", false},
    {Service::errorLogging, "qrsk-med/3.0/ErrorLogging/", false},
    {Service::crashLogging, "qrsk-med/3.0/CrashLogging/", true},
    {Service::activityMap, "qrsk-med/3.0/ActivityMap/", false},
    {Service::thirdPartyCacheEnrichment, "qrsk-med/3.0/ThirdPartyCacheEnrichment/", false},
}};
static_assert(isOrderedBy<&ServiceRow::service>(kServiceRows, Service::thirdPartyCacheEnrichment));

constexpr const ServiceRow& rowOf(Service service) {
  return kServiceRows[static_cast<std::size_t>(service)];
}

/// The last word of its path.
constexpr std::string_view nameOf(Service service) {
  std::string_view path = rowOf(service).path;
  path.remove_suffix(1);  // the slash
  return path.substr(path.rfind('/') + 1);
}
static_assert(nameOf(Service::getDeviceId) == "GetDeviceID");

/// Where the stored reports of a category go.
constexpr Service serviceOf(ReportCategory category) {
  switch (category) {
    case ReportCategory::bio:
      return Service::biometricData;
    case ReportCategory::crash:
      return Service::crashLogging;
    case ReportCategory::communicationError:
      return Service::errorLogging;
    case ReportCategory::activity:
      break;
  }
  return Service::activityMap;
}

}  // namespace quorvance
