// The newest exchanges in memory, and in which order they changed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <vector>

#include "apps/risk_server/exchanges/exchange.h"

namespace risk_server {

// Both bounds hold; the newest exchange is always kept.
inline constexpr std::size_t kMaxKeptExchanges = 10'000;
inline constexpr std::size_t kMaxKeptBytes = std::size_t{64} << 20;

// An exchange never changes once it is recorded, so readers share it; its outcome comes later.
struct KeptExchange {
  std::shared_ptr<const Exchange> exchange;
  ReplyOutcome outcome;
  std::uint64_t change = 0;  // the number of its latest change
};

// What changed behind a number.
struct ExchangeChanges {
  std::vector<KeptExchange> changed;  // in the order of their latest changes
  std::uint64_t last = 0;             // the number to go on from
  std::uint64_t oldest = 0;  // the id of the oldest exchange that is kept, or of the next one
  bool hasMore = false;      // `most` was reached
  bool hasGap = false;       // some that changed are not kept any more
};

// Every exchange that comes and every outcome that is added is a change; changes are numbered from
// 1. An exchange that changed twice is told once, with what it is now. Not guarded: the log is.
class KeptExchanges {
 public:
  // Ids come one after the other.
  void add(std::shared_ptr<const Exchange> exchange);
  void setOutcome(std::uint64_t id, const ReplyOutcome& outcome);
  // Drops all. That is a change, too, but no gap.
  void clear();

  // Null when it is not kept.
  const KeptExchange* find(std::uint64_t id) const;
  // At most `most` of them.
  ExchangeChanges changesAfter(std::uint64_t change, std::size_t most) const;
  // The newest for which the filter holds, oldest first.
  std::vector<KeptExchange> newest(std::size_t most,
                                   const std::function<bool(const Exchange&)>& filter) const;

  const std::deque<KeptExchange>& all() const { return kept_; }

 private:
  void noteChange(KeptExchange& kept);
  void dropOldest();
  void dropStaleChanges();

  std::deque<KeptExchange> kept_;
  std::size_t bytes_ = 0;
  std::uint64_t lastId_ = 0;
  std::deque<std::uint64_t> changes_;  // ids, 0 for none; changes_[0] has the number firstChange_
  std::uint64_t firstChange_ = 1;
  std::uint64_t lastDropped_ = 0;  // the highest number of a change of what was dropped for space
};

}  // namespace risk_server
