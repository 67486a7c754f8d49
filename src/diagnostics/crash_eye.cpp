#include "diagnostics/crash_eye.h"

#include <utility>

#include "base/collection.h"
#include "diagnostics/crash_delegates.h"
#include "diagnostics/crash_plan.h"

namespace quorvance {
namespace {

CrashVersions versionsFrom(SystemTexts& texts) {
  return {SystemTexts::sdkVersion(), texts.readSystemVersion().value_or(""),
          texts.deviceModel().value_or("")};
}

// In the signal handler: the list was made by the installation.
bool isAnyDelegateAlive() noexcept {
  return isCollectionEnabled() && CrashDelegates::ofProcess().isAnyoneAlive();
}

void arm(CrashTrap& trap, DocumentsFolder* documents, const CrashVersions& versions) {
  CrashPlan plan = makeCrashPlan(versions);
  if (documents != nullptr) plan.folder = documents->fileSystemPath();
  plan.isAnyoneListening = &isAnyDelegateAlive;
  plan.tell = [versions](const CaughtCrash& crash) {
    CrashDelegates::ofProcess().tell(crashModelOf(crash, versions));
  };
  trap.install(std::move(plan));
}

}  // namespace

CrashEye::CrashEye(std::shared_ptr<CrashTrap> trap, std::shared_ptr<SystemTexts> texts,
                   std::shared_ptr<DocumentsFolder> documents)
    : trap_(std::move(trap)), texts_(std::move(texts)), documents_(std::move(documents)) {}

void CrashEye::install(std::weak_ptr<CrashEyeDelegate> delegate) {
  if (!trap_) return;
  CrashDelegates::ofProcess().add(delegate);
  const CrashVersions versions = versionsFrom(*texts_);
  arm(*trap_, documents_.get(), versions);
  if (!versions.iosVer.empty()) return;
  texts_->onceSystemVersionIsKnown(
      [trap = trap_, documents = documents_, weak = std::weak_ptr(texts_)] {
        if (const auto texts = weak.lock()) arm(*trap, documents.get(), versionsFrom(*texts));
      });
}

}  // namespace quorvance
