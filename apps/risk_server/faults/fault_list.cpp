#include "apps/risk_server/faults/fault_list.h"

#include <utility>

namespace risk_server {

std::optional<std::uint64_t> FaultList::replace(std::vector<Fault> faults,
                                                std::optional<std::uint64_t> onlyVersion) {
  std::vector<Entry> entries;
  entries.reserve(faults.size());
  for (Fault& fault : faults) {
    entries.push_back({std::make_shared<const Fault>(std::move(fault)), 0, 0});
  }
  const std::lock_guard lock(mutex_);
  if (onlyVersion && *onlyVersion != version_) return std::nullopt;
  entries_.swap(entries);
  return ++version_;
}

std::uint64_t FaultList::version() const {
  const std::lock_guard lock(mutex_);
  return version_;
}

template <typename Matches>
std::shared_ptr<const Fault> FaultList::apply(const Matches& matches) {
  std::shared_ptr<const Fault> chosen;
  const std::lock_guard lock(mutex_);
  for (Entry& entry : entries_) {
    const Fault& fault = *entry.fault;
    if (!matches(fault)) continue;
    ++entry.calls;
    const bool due =
        entry.calls > fault.skip && entry.calls <= fault.first && entry.applied < fault.times;
    if (chosen || !due) continue;
    ++entry.applied;
    chosen = entry.fault;
  }
  return chosen;
}

std::shared_ptr<const Fault> FaultList::applyToCall(const std::string& path) {
  return apply([&](const Fault& fault) {
    return !fault.atAccept && (fault.path == kEveryPath || fault.path == path);
  });
}

std::shared_ptr<const Fault> FaultList::applyToConnection() {
  return apply([](const Fault& fault) { return fault.atAccept; });
}

Json FaultList::asJson() const {
  Json list = Json::array();
  const std::lock_guard lock(mutex_);
  for (const Entry& entry : entries_) {
    Json shown = Json::object();
    shown["fault"] = entry.fault->given;
    shown["calls"] = entry.calls;
    shown["struck"] = entry.applied;
    list.push_back(std::move(shown));
  }
  return list;
}

}  // namespace risk_server
