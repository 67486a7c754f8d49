#include "core/context.h"

#include <mutex>
#include <optional>
#include <utility>

#include "base/fatal.h"
#include "base/forked_child.h"
#include "core/stored_report_uploader.h"
#include "diagnostics/crash_eye.h"
#include "diagnostics/queued_report_keeper.h"

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

template <class Part, class Default>
std::shared_ptr<Part> partOr(std::shared_ptr<Part> part, Default makeDefault) {
  return part ? std::move(part) : makeDefault();
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

Context::Context(Platform usedPlatform, ContextParts parts)
    : platform(checked(std::move(usedPlatform))),
      state(std::make_shared<InnerQuorvanceData>(platform.clock, platform.defaults,
                                                 platform.identity)),
      texts(std::make_shared<SystemTexts>(platform.environment)),
      tracing(std::make_shared<TracingManager>(state, texts)),
      exceptions(std::make_shared<ExceptionLogger>(tracing)),
      reportStore(std::make_shared<ReportStore>(platform.documents, exceptions)),
      reports(partOr(std::move(parts.reports),
                     [this] {
                       return std::make_shared<QueuedReportKeeper>(reportStore,
                                                                   platform.backgroundQueue);
                     })),
      crashCatcher(
          partOr(std::move(parts.crashCatcher),
                 [this] { return std::make_shared<CrashEye>(platform.crashTrap, texts); })),
      deviceData(std::make_shared<DeviceDataManager>(platform, state, texts)),
      screens(partOr(std::move(parts.screens),
                     [] { return std::make_shared<InertScreenListenerMaker>(); })),
      uploader(partOr(std::move(parts.uploader), [this] {
        return std::make_shared<StoredReportUploader>(reportStore, platform.backgroundQueue);
      })) {}

CallServices Context::callServices() const {
  return {platform.http, platform.backgroundQueue, state, texts, tracing, exceptions, reports};
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

bool chooseProcessPlatform(Platform platform) {
  ProcessState& process = processState();
  const std::lock_guard lock(process.mutex);
  if (process.context) return false;
  process.chosenPlatform = std::move(platform);
  return true;
}

}  // namespace quorvance
