#include "diagnostics/pending_work.h"

#include <utility>

#include "base/out_of_memory.h"

namespace quorvance {

class PendingWork::Piece {
 public:
  explicit Piece(std::shared_ptr<PendingWork> work)
      : work_(std::move(work)), period_(work_->add()) {}
  ~Piece() { work_->end(period_); }
  Piece(const Piece&) = delete;
  Piece& operator=(const Piece&) = delete;

 private:
  const std::shared_ptr<PendingWork> work_;
  const std::uint64_t period_;
};

PendingWork::Mark PendingWork::begin() noexcept {
  Mark mark;
  hasMemoryFor([&] { mark = std::make_shared<const Piece>(shared_from_this()); });
  return mark;
}

std::uint64_t PendingWork::add() noexcept {
  const std::lock_guard lock(mutex_);
  ++total_;
  ++periods_.back();
  return firstPeriod_ + periods_.size() - 1;
}

void PendingWork::end(std::uint64_t period) noexcept {
  const std::lock_guard lock(mutex_);
  --total_;
  --periods_[period - firstPeriod_];
  const std::uint64_t before = firstPeriod_;
  for (; periods_.size() > 1 && periods_.front() == 0; ++firstPeriod_) periods_.pop_front();
  if (firstPeriod_ != before) emptied_.notify_all();
}

std::size_t PendingWork::count() const {
  const std::lock_guard lock(mutex_);
  return total_;
}

// Under the mutex: the first period of what is accepted from now on.
std::uint64_t PendingWork::closePeriod() {
  if (periods_.back() != 0) periods_.push_back(0);
  return firstPeriod_ + periods_.size() - 1;
}

bool PendingWork::waitForPresent(std::chrono::steady_clock::time_point deadline) {
  std::unique_lock lock(mutex_);
  if (total_ == 0) return true;
  const std::uint64_t next = closePeriod();
  return emptied_.wait_until(lock, deadline, [&] { return firstPeriod_ >= next; });
}

}  // namespace quorvance
