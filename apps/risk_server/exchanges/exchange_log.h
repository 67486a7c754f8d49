// What was asked and answered: kept in memory, and written to a file as JSON lines.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "apps/risk_server/exchanges/kept_exchanges.h"

namespace risk_server {

struct Tally {
  std::map<std::string, std::uint64_t> calls;  // accepted calls by full path
  std::uint64_t refused = 0;
  std::uint64_t faultsApplied = 0;  // on demand, to connections too
};

// Any thread, guarded by mutex_. The order is the order of record().
class ExchangeLog {
 public:
  // Appends to `file` when there is one. Throws InputError when it cannot be written. `changed` is
  // called after every change, with no lock held.
  explicit ExchangeLog(
      const std::optional<std::filesystem::path>& file, std::function<void()> changed = [] {});

  // Numbers the exchange, writes and flushes the line, then wakes who waits. Returns the id.
  std::uint64_t record(Exchange exchange);
  // Of one that is not kept any more it is ignored. The file has the line already.
  void setOutcome(std::uint64_t id, const ReplyOutcome& outcome);
  // Forgets what is kept; the file and the tally stay.
  void clearKept();

  Tally tally() const;
  // Copies everything: for tests in the same process.
  std::vector<Exchange> kept() const;

  // As in KeptExchanges; what is returned is shared, not copied.
  std::optional<KeptExchange> find(std::uint64_t id) const;
  ExchangeChanges changesAfter(std::uint64_t change, std::size_t most) const;
  std::vector<KeptExchange> newest(std::size_t most,
                                   const std::function<bool(const Exchange&)>& filter) const;

  // Blocks until `path` was accepted at least `count` times; false when the time is over first.
  bool waitForCalls(const std::string& path, std::uint64_t count,
                    std::chrono::milliseconds timeout) const;
  bool waitForRefusals(std::uint64_t count, std::chrono::milliseconds timeout) const;
  bool waitForAppliedFaults(std::uint64_t count, std::chrono::milliseconds timeout) const;

 private:
  struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };
  void writeLine(const std::string& line);
  void count(const Exchange& exchange);

  mutable std::mutex mutex_;
  mutable std::condition_variable recorded_;
  const std::function<void()> changed_;
  std::unique_ptr<std::FILE, FileCloser> file_;
  std::uint64_t lastId_ = 0;
  KeptExchanges kept_;
  Tally tally_;
};

}  // namespace risk_server
