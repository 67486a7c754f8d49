#include "core/pending_verdict.h"

#include <new>
#include <utility>

#include "base/out_of_memory.h"

namespace quorvance {

void deliverAnswerless(const RiskCompletion& completion) noexcept {
  if (!completion) return;
  RiskVerdict verdict = answerlessVerdict({});
  callHost([&] {
    completion(verdict.risk, std::move(verdict.signedRisk), std::move(verdict.requestId));
  });
}

void deliverAnswerless(const VerdictCompletion& completion) noexcept {
  if (completion) callHost([&] { completion(Verdict()); });
}

PendingVerdict::PendingVerdict(std::shared_ptr<BackgroundQueue> queue)
    : queue_(std::move(queue)),
      notice_(queue_->prepare(WorkLane::completions,
                              [this](const PreparedTask::Owner&) { answerless(); })) {}

void PendingVerdict::waitFor(RiskCompletion completion) {
  begin_ = std::chrono::steady_clock::now();
  riskCompletion_ = std::move(completion);
}

void PendingVerdict::waitFor(VerdictCompletion completion) {
  begin_ = std::chrono::steady_clock::now();
  completion_ = std::move(completion);
}

void PendingVerdict::setCall(const PreparedCall& call) {
  requestId_ = call.requestId;
  pending_ = call.pending;
  hasServerUrl_ = call.url.size() > rowOf(call.service).path.size();
}

// Whoever delivers may use all that the verdict has.
void PendingVerdict::answer(const ResponceObject& response) {
  if (isDelivered_.exchange(true)) return;
  RiskVerdict verdict;
  VerdictReason reason = VerdictReason::givenUp;
  if (hasMemoryFor([&] { verdict = readVerdict(response); })) {
    reason = reasonOf(response);
    if (reason == VerdictReason::answered && !verdict.hasLevel) reason = VerdictReason::unreadable;
  } else {
    verdict = answerlessVerdict(std::move(requestId_));
  }
  deliver(std::move(verdict), reason, response.statusCode);
}

void PendingVerdict::giveUp(const std::shared_ptr<PendingVerdict>& verdict,
                            VerdictReason reason) noexcept {
  VerdictReason none = VerdictReason::answered;
  verdict->reason_.compare_exchange_strong(none, reason);
  verdict->notice_->start(verdict);
}

void PendingVerdict::answerless() {
  if (isDelivered_.exchange(true)) return;
  deliver(answerlessVerdict(std::move(requestId_)), reason_, std::nullopt);
}

// The host's completion ends here, and with it what it holds.
void PendingVerdict::deliver(RiskVerdict read, VerdictReason reason,
                             std::optional<int> httpStatus) {
  if (reason == VerdictReason::cannotBeSent && !hasServerUrl_) reason = VerdictReason::notSetUp;
  const auto elapsed =
      std::chrono::floor<std::chrono::milliseconds>(std::chrono::steady_clock::now() - begin_);
  if (const RiskCompletion completion = std::exchange(riskCompletion_, nullptr)) {
    callHost([&] { completion(read.risk, std::move(read.signedRisk), std::move(read.requestId)); });
  } else if (const VerdictCompletion full = std::exchange(completion_, nullptr)) {
    callHost([&] {
      full({read.risk, std::move(read.signedRisk), std::move(read.requestId), reason, httpStatus,
            elapsed});
    });
  }
  pending_ = {};
}

PendingVerdicts::PendingVerdicts(std::shared_ptr<BackgroundQueue> queue)
    : queue_(std::move(queue)) {
  reserve_.reserve(kReserve);
  while (reserve_.size() < kReserve) {
    reserve_.push_back(make());
    if (!reserve_.back()) throw std::bad_alloc();
  }
}

std::shared_ptr<PendingVerdict> PendingVerdicts::make() {
  std::shared_ptr<PendingVerdict> verdict;
  hasMemoryFor([&] { verdict = std::make_shared<PendingVerdict>(queue_); });
  if (verdict && !verdict->isUsable()) verdict.reset();
  return verdict;
}

std::shared_ptr<PendingVerdict> PendingVerdicts::take() {
  std::shared_ptr<PendingVerdict> verdict = make();
  const std::lock_guard lock(mutex_);
  if (!verdict) {
    if (reserve_.empty()) return nullptr;
    verdict = std::move(reserve_.back());
    reserve_.pop_back();
  } else if (reserve_.size() < kReserve) {
    if (auto further = make()) reserve_.push_back(std::move(further));
  }
  return verdict;
}

}  // namespace quorvance
