#include <chrono>
#include <utility>

#include "core/manager_core.h"
#include "core/response_text.h"

namespace quorvance {
namespace {

constexpr std::chrono::seconds kSessionRetryDelay{10};

bool isAccepted(const ResponceObject& response) {
  if (!response.succeeded() || !response.output) return false;
  const std::string* answer = findText(*response.output, "response");
  return answer != nullptr && answer->find("OK") != std::string::npos;
}

}  // namespace

// No trace entry, by contract. Identity and session are those of now; the snapshots are built in
// the background, once they have been read.
void ManagerCore::sendDataWithNewSession() {
  {
    const std::lock_guard lock(mutex_);
    acceptedSession_.reset();
  }
  context_->facts->whenRefreshed([self = shared_from_this(),
                                  call = networkManager_->prepare(Service::sendSessionData)] {
    self->networkManager_->send(call,
                                self->context_->deviceData->getJson(CheckPointType::GENERAL, true),
                                [self, session = call.session](const ResponceObject& response) {
                                  self->receiveSessionAnswer(response, session);
                                });
  });
}

// A session that a logout has replaced may still be accepted; that tells nothing of the running
// one.
void ManagerCore::receiveSessionAnswer(const ResponceObject& response, const Session& session) {
  printResponse(response);
  if (!isAccepted(response)) {
    sendDataWithNewSessionThread();
  } else if (session.idSession == getSessionId()) {
    const std::lock_guard lock(mutex_);
    acceptedSession_ = session.idSession;
  }
}

// Whether the server has accepted the running session.
bool ManagerCore::isDataSendAfterSession() const {
  const std::optional<std::string> running = getSessionId();
  const std::lock_guard lock(mutex_);
  return acceptedSession_ && acceptedSession_ == running;
}

void ManagerCore::sendDataWithNewSessionThread() {
  schedule(kSessionRetryDelay, [](ManagerCore& self) {
    if (!self.isDataSendAfterSession()) self.sendDataWithNewSession();
  });
}

void ManagerCore::logout() {
  const OperationTrace trace(*context_->tracing, "logout()");
  uploadStoredReports(ReportCategory::activity);
  identity().forgetUser();
  context_->state->startNewSession();
  sendDataWithNewSession();
  flags_.logoutEventNow = true;
  if (const auto& face = context_->platform.faceDetection) face->reset();
}

}  // namespace quorvance
