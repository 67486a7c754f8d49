#include "core/context.h"

#include <mutex>
#include <optional>
#include <utility>

#include "base/fatal.h"
#include "base/forked_child.h"

namespace quorvance {
namespace {

Platform checked(Platform platform) {
  if (!platform.clock || !platform.mainQueue || !platform.backgroundQueue || !platform.http ||
      !platform.defaults) {
    fatalError("a platform lacks its clock, a queue, its HTTP session or its key-value store");
  }
  watchForForks();
  return platform;
}

// Leaked on purpose: threads of the library may outlive every static destructor.
struct ProcessState {
  std::mutex mutex;
  std::optional<Platform> chosenPlatform;
  std::shared_ptr<Context> context;
};

ProcessState& processState() {
  static auto* const state = new ProcessState();
  return *state;
}

}  // namespace

Context::Context(Platform usedPlatform)
    : platform(checked(std::move(usedPlatform))),
      state(std::make_shared<InnerQuorvanceData>(platform.clock, platform.defaults,
                                                 platform.identity)),
      system(std::make_shared<SystemFactsReader>(platform.facts.system)),
      texts(std::make_shared<SystemTexts>(platform.environment, system)),
      tracing(std::make_shared<TracingManager>(state, texts)),
      exceptions(std::make_shared<ExceptionLogger>(tracing)),
      ledger(std::make_shared<DeliveryLedger>()),
      reportStore(std::make_shared<ReportStore>(platform.documents, exceptions, ledger)),
      reports(std::make_shared<ReportKeeper>(reportStore, platform.backgroundQueue, texts, ledger)),
      crashEye(std::make_shared<CrashEye>(platform.crashTrap, texts, platform.documents)),
      redaction(platform.beforeSend ? std::make_shared<Redaction>(platform.beforeSend) : nullptr),
      deviceData(std::make_shared<DeviceDataManager>(platform, state, texts, system)),
      screens(std::make_shared<ScreenListenerMaker>(screenServices())),
      uploader(std::make_shared<ReportUploader>(reportStore, platform.backgroundQueue, ledger)) {}

CallServices Context::callServices() const {
  return {
      platform.http, platform.backgroundQueue, state, texts, tracing, exceptions, reports, ledger,
      redaction};
}

ScreenServices Context::screenServices() const {
  return {state,
          tracing,
          reports,
          platform.hostApplication,
          platform.mainQueue,
          platform.backgroundQueue,
          platform.motion,
          std::make_shared<FaceVerification>(platform.faceDetection, platform.authorization, state,
                                             platform.backgroundQueue),
          ledger};
}

std::shared_ptr<Context> processContext() {
  ProcessState& process = processState();
  const std::lock_guard lock(process.mutex);
  if (!process.context) {
    process.context = std::make_shared<Context>(
        process.chosenPlatform ? std::move(*process.chosenPlatform) : makeDefaultPlatform());
    process.chosenPlatform.reset();
  }
  return process.context;
}

std::shared_ptr<Context> existingProcessContext() {
  ProcessState& process = processState();
  const std::lock_guard lock(process.mutex);
  return process.context;
}

bool chooseProcessPlatform(Platform platform) {
  ProcessState& process = processState();
  const std::lock_guard lock(process.mutex);
  if (process.context) return false;
  process.chosenPlatform = std::move(platform);
  return true;
}

}  // namespace quorvance
