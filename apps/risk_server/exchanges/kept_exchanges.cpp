#include "apps/risk_server/exchanges/kept_exchanges.h"

#include <algorithm>
#include <utility>

namespace risk_server {
namespace {

// A fact has a node of its own; few are longer than that.
constexpr std::size_t kBytesOfAFact = 96;

std::size_t bytesOf(const Exchange& exchange) {
  std::size_t bytes = sizeof(Exchange) + exchange.method.size() + exchange.path.size() +
                      exchange.contentType.size() + exchange.request.size() +
                      exchange.reply.size() + exchange.fault.size() +
                      exchange.faultInjected.size() + exchange.facts.size() * kBytesOfAFact;
  for (const Mismatch& violation : exchange.violations) {
    bytes +=
        sizeof violation + violation.reason.size() + violation.place.size() * sizeof(PlaceStep);
  }
  return bytes;
}

}  // namespace

void KeptExchanges::add(std::shared_ptr<const Exchange> exchange) {
  bytes_ += bytesOf(*exchange);
  lastId_ = exchange->id;
  kept_.push_back({std::move(exchange), {}, 0});
  noteChange(kept_.back());
  while (kept_.size() > kMaxKeptExchanges || (bytes_ > kMaxKeptBytes && kept_.size() > 1)) {
    dropOldest();
  }
  dropStaleChanges();
}

void KeptExchanges::setOutcome(std::uint64_t id, const ReplyOutcome& outcome) {
  if (find(id) == nullptr) return;
  KeptExchange& kept = kept_[static_cast<std::size_t>(id - kept_.front().exchange->id)];
  kept.outcome = outcome;
  noteChange(kept);
  dropStaleChanges();
}

void KeptExchanges::clear() {
  kept_.clear();
  bytes_ = 0;
  changes_.push_back(0);
  dropStaleChanges();
}

const KeptExchange* KeptExchanges::find(std::uint64_t id) const {
  if (kept_.empty() || id < kept_.front().exchange->id || id > kept_.back().exchange->id) {
    return nullptr;
  }
  return &kept_[static_cast<std::size_t>(id - kept_.front().exchange->id)];
}

void KeptExchanges::noteChange(KeptExchange& kept) {
  changes_.push_back(kept.exchange->id);
  kept.change = firstChange_ + changes_.size() - 1;
}

void KeptExchanges::dropOldest() {
  lastDropped_ = std::max(lastDropped_, kept_.front().change);
  bytes_ -= bytesOf(*kept_.front().exchange);
  kept_.pop_front();
}

// The last one stays: its number says how far the changes have come.
void KeptExchanges::dropStaleChanges() {
  while (changes_.size() > 1) {
    const KeptExchange* kept = find(changes_.front());
    if (kept != nullptr && kept->change == firstChange_) return;
    changes_.pop_front();
    ++firstChange_;
  }
}

ExchangeChanges KeptExchanges::changesAfter(std::uint64_t change, std::size_t most) const {
  ExchangeChanges result;
  result.oldest = kept_.empty() ? lastId_ + 1 : kept_.front().exchange->id;
  result.hasGap = change > 0 && change < lastDropped_;
  const std::uint64_t end = firstChange_ + changes_.size();
  std::uint64_t number = std::max(change + 1, firstChange_);
  for (; number < end && result.changed.size() < most; ++number) {
    const KeptExchange* kept = find(changes_[static_cast<std::size_t>(number - firstChange_)]);
    if (kept != nullptr && kept->change == number) result.changed.push_back(*kept);
  }
  result.hasMore = number < end;
  result.last = std::max(change, number - 1);
  return result;
}

std::vector<KeptExchange> KeptExchanges::newest(
    std::size_t most, const std::function<bool(const Exchange&)>& filter) const {
  std::vector<KeptExchange> found;
  for (auto kept = kept_.rbegin(); kept != kept_.rend() && found.size() < most; ++kept) {
    if (filter(*kept->exchange)) found.push_back(*kept);
  }
  std::reverse(found.begin(), found.end());
  return found;
}

}  // namespace risk_server
