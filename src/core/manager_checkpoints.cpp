#include <algorithm>
#include <chrono>
#include <exception>
#include <utility>

#include "base/collection.h"
#include "base/debug.h"
#include "base/json_exchange.h"
#include "base/out_of_memory.h"
#include "base/text.h"
#include "core/manager_core.h"
#include "core/response_text.h"
#include "model/transaction_update.h"

namespace quorvance {
namespace {

// Longer than any exchange; the time of now may be added to it.
constexpr std::chrono::hours kLongestDeadline{24 * 365};

Json jsonOf(const CheckPointBase& checkPoint) {
  return writtenJson<Json>([&](JsonSink& sink) { checkPoint.writeJson(sink); });
}

// Entries are kept for long, and there are many.
TraceArguments traceArgumentsOf(const Json& json) {
  std::string text = textOf(json);
  text.shrink_to_fit();
  auto arguments = std::make_shared<std::vector<std::string>>();
  arguments->push_back(std::move(text));
  return arguments;
}

}  // namespace

void ManagerCore::configureUserId(const CheckPointBase& checkPoint) {
  Json json = jsonOf(checkPoint);
  const JsonDiscarder discarder(json);
  configureUserId(checkPoint, json, nullptr);
}

void ManagerCore::configureUserId(const CheckPointBase& checkPoint, const Json& json,
                                  const TraceArguments& traced) {
  const OperationTrace trace(*context_->tracing, "configureUserId",
                             [&] { return traced ? traced : traceArgumentsOf(json); });
  const User* user = checkPoint.userSigningIn();
  if (user != nullptr && user->userId) configureUserId(user->userId);
}

// While collection is off nothing of a checkpoint is looked at but who signs in: requests of later
// must not go out under the user before.
bool ManagerCore::isRefused(const CheckPointBase& checkPoint) {
  if (isCollectionEnabled()) return false;
  const User* user = checkPoint.userSigningIn();
  if (user != nullptr) configureUserId(user->userId);
  return true;
}

// The ask is made at once, under the identity of before a login. Only its start waits.
Task ManagerCore::uploadLater(ReportCategory category) {
  ReportUploader::SharedRun run = askForUpload(category);
  if (!run) return nullptr;
  return [uploader = context_->uploader, run = std::move(run)] { uploader->start(run); };
}

// Takes the user out of a login first, so that the body already carries it.
Json ManagerCore::checkPointBody(const CheckPointBase& checkPoint, Json json,
                                 const TraceArguments& traced) {
  const JsonDiscarder jsonDiscarder(json);
  configureUserId(checkPoint, json, traced);
  Json body = context_->deviceData->getJson(checkPoint.type(), false);
  JsonDiscarder discarder(body);
  setMember(body, CheckPointTypeToString::toString(checkPoint.type()), std::move(json));
  discarder.keep();
  return body;
}

bool ManagerCore::getRiskForCheckPoint(const CheckPointBase& checkPoint,
                                       RiskCompletion&& completion) {
  return takeVerdict(checkPoint, {}, std::move(completion));
}

bool ManagerCore::getRiskForCheckPoint(const CheckPointBase& checkPoint, VerdictOptions options,
                                       VerdictCompletion&& completion) {
  return takeVerdict(checkPoint, options, std::move(completion));
}

template <class Completion>
bool ManagerCore::takeVerdict(const CheckPointBase& checkPoint, VerdictOptions options,
                              Completion&& completion) {
  const std::shared_ptr<PendingVerdict> verdict = verdicts_.take();
  if (!verdict) return false;
  verdict->waitFor(std::forward<Completion>(completion));
  if (isShutDown()) {
    refuse(verdict, VerdictReason::shutDown);
    return true;
  }
  try {
    askForRisk(checkPoint, options, verdict);
  } catch (const std::exception&) {
    PendingVerdict::giveUp(verdict, VerdictReason::givenUp);
  }
  return true;
}

// No call comes of it, yet a flush waits for its completion.
void ManagerCore::refuse(const std::shared_ptr<PendingVerdict>& verdict, VerdictReason reason) {
  verdict->setPending(context_->ledger->pending()->begin());
  PendingVerdict::giveUp(verdict, reason);
}

// The network's thread keeps the time where it can: a host's own main loop may be what waits.
void ManagerCore::startDeadline(std::chrono::milliseconds deadline,
                                const std::shared_ptr<PendingVerdict>& verdict) {
  if (deadline <= deadline.zero()) return PendingVerdict::giveUp(verdict, VerdictReason::timedOut);
  const auto wait = std::min<std::chrono::milliseconds>(deadline, kLongestDeadline);
  const Task expire = withinMemory([weak = std::weak_ptr(verdict)] {
    if (const auto late = weak.lock()) PendingVerdict::giveUp(late, VerdictReason::timedOut);
  });
  const Platform& platform = context_->platform;
  if (!platform.http->dispatchAfter(wait, expire)) platform.mainQueue->postAfter(wait, expire);
}

void ManagerCore::askForRisk(const CheckPointBase& checkPoint, VerdictOptions options,
                             const std::shared_ptr<PendingVerdict>& verdict) {
  if (isRefused(checkPoint)) return refuse(verdict, VerdictReason::collectionOff);
  Json json = jsonOf(checkPoint);
  const JsonDiscarder discarder(json);
  const OperationTrace trace(*context_->tracing, "getRiskForCheckPoint",
                             [&] { return traceArgumentsOf(json); });
  Task upload = uploadLater(ReportCategory::activity);
  Json body = checkPointBody(checkPoint, std::move(json), trace.arguments());
  const JsonDiscarder bodyDiscarder(body);
  const PreparedCall call = networkManager_->prepare(Service::getCheckpointRisk, checkPoint.type());
  verdict->setCall(call);
  if (options.deadline) startDeadline(*options.deadline, verdict);
  networkManager_->send(
      call, std::move(body),
      {[verdict](const ResponceObject& response) { verdict->answer(response); },
       [verdict] { PendingVerdict::giveUp(verdict, VerdictReason::cannotBeSent); },
       [verdict] { PendingVerdict::giveUp(verdict, VerdictReason::givenUp); }},
      std::move(upload));
}

void ManagerCore::arriveToCheckPoint(const CheckPointBase& checkPoint) {
  if (isRefused(checkPoint)) return;
  Json json = jsonOf(checkPoint);
  const JsonDiscarder discarder(json);
  const OperationTrace trace(*context_->tracing, "arriveToCheckPoint",
                             [&] { return traceArgumentsOf(json); });
  Task upload = uploadLater(ReportCategory::activity);
  Json body = checkPointBody(checkPoint, std::move(json), trace.arguments());
  const JsonDiscarder bodyDiscarder(body);
  networkManager_->send(
      networkManager_->prepare(Service::sendCheckpointEvent, checkPoint.type()), std::move(body),
      [self = shared_from_this(),
       kept = trace.continuation()](const ResponceObject& response) mutable {
        printResponse(response);
        appendResponse(kept, response);
      },
      std::move(upload));
}

void ManagerCore::updateCheckPointStatus(CheckPointType type, const std::string& requestID,
                                         CheckPointStatus status,
                                         const std::optional<std::string>& transactionID) {
  // Traced or not, a word outside a vocabulary stops the process.
  const std::string typeWord = CheckPointTypeToString::toString(type);
  const OperationTrace trace(*context_->tracing, "updateCheckPointStatus", [&] {
    return std::vector{typeWord, requestID, CheckPointStatusToString::toString(status),
                       textOrNil(transactionID)};
  });
  TransactionUpdate update{.requestID = requestID, .transactionID = {}, .status = status};
  if (type == CheckPointType::TRANSACTION) update.transactionID = transactionID;
  Json body = makeObject(4);
  const JsonDiscarder discarder(body);
  putMember(body, "transactionUpdate", update.getJson());
  const auto print = [weak = weak_from_this()](const ResponceObject& response) {
    if (weak.expired()) return;
    debugPrint(std::string("updateTransactionStatus: ") +
               (response.succeeded() ? "true" : "false"));
  };
  networkManager_->send(
      networkManager_->prepare(Service::updateTransactionResult, std::nullopt, requestID),
      std::move(body), print);
}

}  // namespace quorvance
