#include "core/pending_verdict.h"

#include <new>
#include <utility>

#include "base/out_of_memory.h"

namespace quorvance {
namespace {

void callCompletion(const RiskCompletion& completion, RiskVerdict verdict) {
  if (!completion) return;
  callHost([&] {
    completion(verdict.risk, std::move(verdict.signedRisk), std::move(verdict.requestId));
  });
}

}  // namespace

void deliverAnswerless(const RiskCompletion& completion) noexcept {
  callCompletion(completion, answerlessVerdict({}));
}

PendingVerdict::PendingVerdict(std::shared_ptr<BackgroundQueue> queue)
    : queue_(std::move(queue)),
      notice_(queue_->prepare(WorkLane::completions, [this](const PreparedTask::Owner&) {
        deliver(answerlessVerdict(std::move(requestId_)));
      })) {}

void PendingVerdict::answer(const ResponceObject& response) {
  RiskVerdict verdict;
  if (!hasMemoryFor([&] { verdict = readVerdict(response); })) {
    verdict = answerlessVerdict(std::move(requestId_));
  }
  deliver(std::move(verdict));
}

void PendingVerdict::giveUp(const std::shared_ptr<PendingVerdict>& verdict) noexcept {
  verdict->notice_->start(verdict);
}

void PendingVerdict::deliver(RiskVerdict verdict) {
  if (!isDelivered_.exchange(true)) callCompletion(completion_, std::move(verdict));
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
