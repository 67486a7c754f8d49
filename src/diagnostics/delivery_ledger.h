#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>

#include "diagnostics/pending_work.h"
#include "quorvance/status.h"

namespace quorvance {

/// What becomes of a report.
enum class ReportFate { stored, sent, droppedFull, droppedWaiting, droppedUnwritten, unreadable };

/// What the library has accepted, and what became of it: in memory, of constant size. Any thread;
/// reports are counted without a lock, since a dying process counts them too.
class DeliveryLedger {
 public:
  const std::shared_ptr<PendingWork>& pending() const { return pending_; }

  void note(ReportFate fate) noexcept { ++fates_[static_cast<std::size_t>(fate)]; }
  /// `now` in milliseconds since 1970.
  void noteSuccess(std::int64_t now) noexcept;
  /// `service` is a constant.
  void noteFailure(std::int64_t now, VerdictReason reason, std::optional<int> httpStatus,
                   std::string_view service) noexcept;

  /// Fills in what is known here.
  void describe(DeliveryStatus& status) const;

 private:
  struct Failure {
    std::int64_t time = 0;
    VerdictReason reason = VerdictReason::givenUp;
    std::optional<int> httpStatus;
    std::string_view service;
  };
  std::uint64_t countOf(ReportFate fate) const { return fates_[static_cast<std::size_t>(fate)]; }

  const std::shared_ptr<PendingWork> pending_ = std::make_shared<PendingWork>();
  std::array<std::atomic<std::uint64_t>, static_cast<std::size_t>(ReportFate::unreadable) + 1>
      fates_{};
  mutable std::mutex mutex_;
  std::optional<std::int64_t> lastSuccess_;
  std::optional<Failure> lastFailure_;
};

}  // namespace quorvance
