#include "apps/risk_server/exchanges/exchange_log.h"

#include <cerrno>
#include <system_error>

namespace risk_server {
namespace {

std::size_t bytesOf(const Exchange& exchange) {
  return sizeof(Exchange) + exchange.method.size() + exchange.path.size() +
         exchange.contentType.size() + exchange.request.size() + exchange.reply.size() +
         exchange.fault.size() + exchange.faultInjected.size();
}

std::string systemMessage(int code) { return std::generic_category().message(code); }

}  // namespace

Json exchangeToJson(const Exchange& exchange) {
  Json line = Json::object();
  line["time"] = exchange.time;
  line["method"] = exchange.method;
  line["path"] = exchange.path;
  line["status"] = exchange.status;
  line["contentType"] = exchange.contentType;
  ParsedJson request = parseServerJson(exchange.request);
  if (request.value) {
    line["request"] = std::move(*request.value);
  } else {
    line["requestText"] = exchange.request;
  }
  ParsedJson reply = parseServerJson(exchange.reply);
  line["reply"] = reply.value ? std::move(*reply.value) : Json(exchange.reply);
  if (!exchange.fault.empty()) line["fault"] = exchange.fault;
  if (!exchange.faultInjected.empty()) line["faultInjected"] = exchange.faultInjected;
  return line;
}

ExchangeLog::ExchangeLog(const std::optional<std::filesystem::path>& file) {
  if (!file) return;
  file_.reset(std::fopen(file->c_str(), "ae"));
  if (!file_) throw InputError(file->string() + ": " + systemMessage(errno));
}

void ExchangeLog::record(Exchange exchange) {
  // file_ is never changed after construction, so the text may be made without the lock.
  const std::string line = file_ ? dumpServerJson(exchangeToJson(exchange)) + "\n" : std::string();
  {
    const std::lock_guard lock(mutex_);
    if (file_) writeLine(line);
    if (!exchange.fault.empty()) {
      ++tally_.refused;
    } else if (!exchange.path.empty()) {
      ++tally_.calls[exchange.path];
    }
    if (!exchange.faultInjected.empty()) ++tally_.faultsApplied;
    keep(std::move(exchange));
  }
  recorded_.notify_all();
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

void ExchangeLog::keep(Exchange exchange) {
  keptBytes_ += bytesOf(exchange);
  kept_.push_back(std::move(exchange));
  while (kept_.size() > kMaxKeptExchanges || (keptBytes_ > kMaxKeptBytes && kept_.size() > 1)) {
    keptBytes_ -= bytesOf(kept_.front());
    kept_.pop_front();
  }
}

Tally ExchangeLog::tally() const {
  const std::lock_guard lock(mutex_);
  return tally_;
}

std::vector<Exchange> ExchangeLog::kept() const {
  const std::lock_guard lock(mutex_);
  return {kept_.begin(), kept_.end()};
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
