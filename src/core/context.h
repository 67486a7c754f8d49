#pragma once

// The manager and what it stands on: start-up, checkpoints, sessions, the upload loops. Start
// reading at manager_core.h.

#include <memory>

#include "biometrics/screen_listener_maker.h"
#include "core/report_uploader.h"
#include "device/device_data_manager.h"
#include "diagnostics/crash_eye.h"
#include "diagnostics/delivery_ledger.h"
#include "diagnostics/exception_logger.h"
#include "diagnostics/report_keeper.h"
#include "diagnostics/report_store.h"
#include "diagnostics/tracing_manager.h"
#include "network/network_call_maker.h"
#include "quorvance/platform/platform.h"
#include "state/inner_quorvance_data.h"
#include "state/system_texts.h"

namespace quorvance {

/// What is process-wide, once per platform. Members stand in the order of the layers, and each is
/// given only what stands above it.
struct Context {
  explicit Context(Platform usedPlatform);

  /// What a service client needs of this context.
  CallServices callServices() const;
  /// The same for screen listeners, once a context.
  ScreenServices screenServices() const;

  const Platform platform;
  const std::shared_ptr<InnerQuorvanceData> state;
  const std::shared_ptr<SystemFactsReader> system;
  const std::shared_ptr<SystemTexts> texts;
  const std::shared_ptr<TracingManager> tracing;
  const std::shared_ptr<ExceptionLogger> exceptions;
  const std::shared_ptr<DeliveryLedger> ledger;
  const std::shared_ptr<ReportStore> reportStore;
  const std::shared_ptr<ReportKeeper> reports;
  const std::shared_ptr<CrashEye> crashEye;
  /// Null without a hook.
  const std::shared_ptr<Redaction> redaction;
  const std::shared_ptr<DeviceDataManager> deviceData;
  const std::shared_ptr<ScreenListenerMaker> screens;
  const std::shared_ptr<ReportUploader> uploader;
};

/// The process's one context, made on first use and never destroyed.
std::shared_ptr<Context> processContext();

/// The same if it has been made; otherwise null.
std::shared_ptr<Context> existingProcessContext();

/// Chooses its platform; false once it has been made.
bool chooseProcessPlatform(Platform platform);

}  // namespace quorvance
