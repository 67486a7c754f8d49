#include <utility>

#include "base/out_of_memory.h"
#include "core/manager_core.h"
#include "core/response_text.h"

namespace quorvance {
namespace {

bool isAccepted(const ResponceObject& response) {
  if (!response.succeeded() || !response.output) return false;
  const std::string* answer = findText(*response.output, "response");
  return answer != nullptr && answer->find("OK") != std::string::npos;
}

}  // namespace

// No trace entry, by contract. The snapshots are built in the background, once they have been read;
// what a session clears it clears when it is asked for.
RetriedExchange::Rules ManagerCore::sessionRules() {
  return {
      .service = Service::sendSessionData,
      .traceName = {},
      .begin = [this] { context_->deviceData->beginSession(); },
      .whenReady = [this](Task task) { context_->deviceData->whenSessionIsReady(std::move(task)); },
      .makeBody = [this] { return context_->deviceData->sessionPayload(); },
      .take = [this](const auto& answer) { return takeSessionAnswer(answer); },
      .isNeeded = [this] { return !isShutDown() && !isDataSendAfterSession(); }};
}

void ManagerCore::sendDataWithNewSession(const PendingWork::Mark& cause) {
  {
    const std::lock_guard lock(mutex_);
    acceptedSession_.reset();
  }
  session_.ask(shared_from_this(), cause);
}

void ManagerCore::sendDataWithNewSessionThread() { session_.askLater(shared_from_this()); }

// A session that a logout has replaced may still be accepted; that tells nothing of the running
// one.
bool ManagerCore::takeSessionAnswer(const RetriedExchange::Answer& answer) {
  printResponse(answer.response);
  if (!isAccepted(answer.response)) return false;
  if (answer.session.idSession == getSessionId()) {
    const std::lock_guard lock(mutex_);
    acceptedSession_ = answer.session.idSession;
  }
  return true;
}

bool ManagerCore::isDataSendAfterSession() const {
  const std::optional<std::string> running = getSessionId();
  const std::lock_guard lock(mutex_);
  return acceptedSession_ && acceptedSession_ == running;
}

void ManagerCore::logout() {
  const OperationTrace trace(*context_->tracing, "logout()");
  // Whatever finds no memory keeps nothing else from ending.
  hasMemoryFor([&] { uploadStoredReports(ReportCategory::activity); });
  hasMemoryFor([&] { identity().forgetUser(); });
  hasMemoryFor([&] { context_->state->startNewSession(); });
  sendDataWithNewSession();
  flags_.logoutEventNow = true;
  if (const auto& face = context_->platform.faceDetection) face->reset();
}

}  // namespace quorvance
