#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "network/quorvance_network_manager.h"
#include "network/risk_verdict.h"
#include "quorvance/platform/queues.h"
#include "quorvance/quorvance_manager.h"

namespace quorvance {

/// A verdict that the host waits for. Its completion runs once, on the background queue: with the
/// server's answer, or without one when the call is given up or its deadline comes first, which
/// needs no memory.
class PendingVerdict {
 public:
  explicit PendingVerdict(std::shared_ptr<BackgroundQueue> queue);
  PendingVerdict(const PendingVerdict&) = delete;
  PendingVerdict& operator=(const PendingVerdict&) = delete;

  /// False when there was no memory to make it.
  bool isUsable() const { return notice_ != nullptr; }
  // Before anything else may happen to it.
  void waitFor(RiskCompletion completion);
  void waitFor(VerdictCompletion completion);
  /// Lasts until the completion has run. Before anybody else has the verdict.
  void setPending(PendingWork::Mark pending) { pending_ = std::move(pending); }
  /// What it comes of, its mark included.
  void setCall(const PreparedCall& call);

  /// On the background queue.
  void answer(const ResponceObject& response);
  /// Any thread, again and again; the first reason counts.
  static void giveUp(const std::shared_ptr<PendingVerdict>& verdict, VerdictReason reason) noexcept;

 private:
  void answerless();
  void deliver(RiskVerdict read, VerdictReason reason, std::optional<int> httpStatus);

  // Outlives the notice.
  const std::shared_ptr<BackgroundQueue> queue_;
  const std::shared_ptr<PreparedTask> notice_;
  std::chrono::steady_clock::time_point begin_;
  // One of the two.
  RiskCompletion riskCompletion_;
  VerdictCompletion completion_;
  std::string requestId_;
  PendingWork::Mark pending_;
  bool hasServerUrl_ = true;
  // Why it was given up; `answered` before that.
  std::atomic<VerdictReason> reason_{VerdictReason::answered};
  std::atomic<bool> isDelivered_{false};
};

/// Makes pending verdicts, and has some ready for when memory is short. Any thread.
class PendingVerdicts {
 public:
  /// So many host calls may find no memory at all at one time.
  static constexpr std::size_t kReserve = 16;

  /// Throws std::bad_alloc.
  explicit PendingVerdicts(std::shared_ptr<BackgroundQueue> queue);
  /// Null without memory and with the reserve used up.
  std::shared_ptr<PendingVerdict> take();

 private:
  std::shared_ptr<PendingVerdict> make();

  const std::shared_ptr<BackgroundQueue> queue_;
  std::mutex mutex_;
  std::vector<std::shared_ptr<PendingVerdict>> reserve_;
};

// Hands the host a verdict without an answer and without a request.
void deliverAnswerless(const RiskCompletion& completion) noexcept;
void deliverAnswerless(const VerdictCompletion& completion) noexcept;

}  // namespace quorvance
