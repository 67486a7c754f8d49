#include "core/manager_core.h"

#include <utility>

namespace quorvance {

std::shared_ptr<ManagerCore> ManagerCore::make(std::shared_ptr<Context> context) {
  return std::shared_ptr<ManagerCore>(new ManagerCore(std::move(context)));
}

ManagerCore::ManagerCore(std::shared_ptr<Context> context)
    : context_(std::move(context)),
      startAppTime_(context_->state->now()),
      networkManager_(std::make_shared<QuorvanceNetworkManager>(
          context_->state, std::make_shared<NetworkCallMaker>(context_->callServices()))),
      configuration_(context_, networkManager_, configurationRules()),
      deviceId_(context_, networkManager_, deviceIdRules()),
      session_(context_, networkManager_, sessionRules()),
      traceUploader_(context_, networkManager_),
      verdicts_(context_->platform.backgroundQueue) {}

std::optional<std::string> ManagerCore::getDeviceId() const {
  return context_->state->readText(StoredKey::deviceId);
}

std::optional<std::string> ManagerCore::getSessionId() const {
  return context_->state->readText(StoredKey::sessionId);
}

void ManagerCore::uploadStoredReports(ReportCategory category) {
  context_->uploader->start(askForUpload(category));
}

ReportUploader::SharedRun ManagerCore::askForUpload(ReportCategory category) {
  return context_->uploader->ask(category, networkManager_, networkManager_->callerOfNow());
}

}  // namespace quorvance
