#include "apps/risk_server/exchanges/exchange_log.h"

#include <cerrno>
#include <system_error>
#include <utility>

namespace risk_server {
namespace {

std::string systemMessage(int code) { return std::generic_category().message(code); }

}  // namespace

ExchangeLog::ExchangeLog(const std::optional<std::filesystem::path>& file,
                         std::function<void()> changed)
    : changed_(std::move(changed)) {
  if (!file) return;
  file_.reset(std::fopen(file->c_str(), "ae"));
  if (!file_) throw InputError(file->string() + ": " + systemMessage(errno));
}

std::uint64_t ExchangeLog::record(Exchange exchange) {
  // file_ is never changed after construction, so the text may be made without the lock, but for
  // the id, which is that of its place in the file.
  std::string line = file_ ? dumpServerJson(exchangeToJson(exchange)) : std::string();
  std::uint64_t id = 0;
  {
    const std::lock_guard lock(mutex_);
    id = exchange.id = ++lastId_;
    if (file_) {
      line.insert(line.size() - 1, ",\"id\":" + std::to_string(id));
      writeLine(line + "\n");
    }
    count(exchange);
    kept_.add(std::make_shared<const Exchange>(std::move(exchange)));
  }
  recorded_.notify_all();
  changed_();
  return id;
}

void ExchangeLog::count(const Exchange& exchange) {
  if (!exchange.fault.empty()) {
    ++tally_.refused;
  } else if (!exchange.path.empty()) {
    ++tally_.calls[exchange.path];
  }
  if (!exchange.faultInjected.empty()) ++tally_.faultsApplied;
}

void ExchangeLog::setOutcome(std::uint64_t id, const ReplyOutcome& outcome) {
  {
    const std::lock_guard lock(mutex_);
    kept_.setOutcome(id, outcome);
  }
  changed_();
}

void ExchangeLog::clearKept() {
  {
    const std::lock_guard lock(mutex_);
    kept_.clear();
  }
  changed_();
}

void ExchangeLog::writeLine(const std::string& line) {
  errno = 0;
  if (std::fwrite(line.data(), 1, line.size(), file_.get()) != line.size() ||
      std::fflush(file_.get()) != 0) {
    // A full disk must not stop the server, but the log is no longer complete: say so each time.
    std::fprintf(stderr, "risk server: the log lost a line: %s\n", systemMessage(errno).c_str());
    std::clearerr(file_.get());
  }
}

Tally ExchangeLog::tally() const {
  const std::lock_guard lock(mutex_);
  return tally_;
}

std::vector<Exchange> ExchangeLog::kept() const {
  const std::lock_guard lock(mutex_);
  std::vector<Exchange> copies;
  for (const KeptExchange& kept : kept_.all()) copies.push_back(*kept.exchange);
  return copies;
}

std::optional<KeptExchange> ExchangeLog::find(std::uint64_t id) const {
  const std::lock_guard lock(mutex_);
  const KeptExchange* kept = kept_.find(id);
  return kept == nullptr ? std::nullopt : std::optional(*kept);
}

ExchangeChanges ExchangeLog::changesAfter(std::uint64_t change, std::size_t most) const {
  const std::lock_guard lock(mutex_);
  return kept_.changesAfter(change, most);
}

std::vector<KeptExchange> ExchangeLog::newest(
    std::size_t most, const std::function<bool(const Exchange&)>& filter) const {
  const std::lock_guard lock(mutex_);
  return kept_.newest(most, filter);
}

bool ExchangeLog::waitForCalls(const std::string& path, std::uint64_t count,
                               std::chrono::milliseconds timeout) const {
  std::unique_lock lock(mutex_);
  return recorded_.wait_for(lock, timeout, [&] {
    const auto found = tally_.calls.find(path);
    return (found == tally_.calls.end() ? 0 : found->second) >= count;
  });
}

bool ExchangeLog::waitForAppliedFaults(std::uint64_t count,
                                       std::chrono::milliseconds timeout) const {
  std::unique_lock lock(mutex_);
  return recorded_.wait_for(lock, timeout, [&] { return tally_.faultsApplied >= count; });
}

bool ExchangeLog::waitForRefusals(std::uint64_t count, std::chrono::milliseconds timeout) const {
  std::unique_lock lock(mutex_);
  return recorded_.wait_for(lock, timeout, [&] { return tally_.refused >= count; });
}

}  // namespace risk_server
