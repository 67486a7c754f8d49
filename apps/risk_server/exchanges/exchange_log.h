// What was asked and answered: kept in memory, and written to a file as JSON lines.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <cstdio>
#include <deque>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "apps/risk_server/server_json.h"

namespace risk_server {

// The newest exchanges are kept in memory, up to both bounds; the file has them all.
inline constexpr std::size_t kMaxKeptExchanges = 10'000;
inline constexpr std::size_t kMaxKeptBytes = std::size_t{64} << 20;

// A connection that a fault on demand closed has no method and no path, and is no call.
struct Exchange {
  std::int64_t time = 0;  // of the decision, milliseconds since 1970
  std::string method;
  std::string path;  // the request target as it came, nothing decoded
  std::string contentType;
  std::string request;  // the body's bytes
  int status = 0;       // 0 when a fault on demand lets no reply go out
  std::string reply;
  std::string fault;          // why the call was refused; empty when it was accepted
  std::string faultInjected;  // the name of the fault on demand that was applied; empty for none
};

struct Tally {
  std::map<std::string, std::uint64_t> calls;  // accepted calls by full path
  std::uint64_t refused = 0;
  std::uint64_t faultsApplied = 0;  // on demand, to connections too
};

// One line of the log: "request" is the body as JSON, or "requestText" when it is no JSON.
Json exchangeToJson(const Exchange& exchange);

// Any thread, guarded by mutex_. The order is the order of record().
class ExchangeLog {
 public:
  // Appends to `file` when there is one. Throws InputError when it cannot be written.
  explicit ExchangeLog(const std::optional<std::filesystem::path>& file);

  // Writes and flushes the line, then wakes who waits.
  void record(Exchange exchange);

  Tally tally() const;
  std::vector<Exchange> kept() const;

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
  void keep(Exchange exchange);

  mutable std::mutex mutex_;
  mutable std::condition_variable recorded_;
  std::unique_ptr<std::FILE, FileCloser> file_;
  std::deque<Exchange> kept_;
  std::size_t keptBytes_ = 0;
  Tally tally_;
};

}  // namespace risk_server
