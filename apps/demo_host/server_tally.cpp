#include "apps/demo_host/server_tally.h"

#include <httplib.h>

#include <algorithm>
#include <limits>
#include <nlohmann/json.hpp>
#include <thread>

#include "apps/demo_host/demo_errors.h"

namespace demo_host {
namespace {

constexpr const char* kTallyPath = "control/tally";
constexpr std::size_t kMaxReplyBytes = std::size_t{1} << 20;
constexpr std::chrono::milliseconds kAskAgainAfter{20};
constexpr int kOk = 200;

using SteadyClock = std::chrono::steady_clock;

bool isCount(const nlohmann::json& value) {
  constexpr std::uint64_t kMost = std::numeric_limits<std::int64_t>::max();
  return value.is_number_unsigned() && value.get<std::uint64_t>() <= kMost;
}

// "http://host:port" and "/path/", of a URL that is known to be one.
std::pair<std::string, std::string> splitUrl(const std::string& url) {
  const auto path = url.find('/', url.find("//") + 2);
  return {url.substr(0, path), url.substr(path)};
}

}  // namespace

Tally since(const Tally& before, const Tally& tally) {
  Tally difference;
  for (const auto& [path, count] : tally.calls) {
    const auto old = before.calls.find(path);
    const std::int64_t calls = count - (old == before.calls.end() ? 0 : old->second);
    if (calls != 0) difference.calls[path] = calls;
  }
  difference.refused = tally.refused - before.refused;
  return difference;
}

std::int64_t missingCalls(const std::map<std::string, std::int64_t>& expected, const Tally& tally) {
  std::int64_t missing = 0;
  for (const auto& [path, count] : expected) {
    const auto found = tally.calls.find(path);
    const std::int64_t arrived = found == tally.calls.end() ? 0 : found->second;
    missing += std::max<std::int64_t>(0, count - arrived);
  }
  return std::max<std::int64_t>(0, missing - tally.refused);
}

std::optional<Tally> tallyFromReply(const std::string& reply) {
  const auto json = nlohmann::json::parse(reply, nullptr, false);
  if (!json.is_object() || !json.contains("calls") || !json.contains("refused")) return {};
  if (!json["calls"].is_object() || !isCount(json["refused"])) return {};
  Tally tally;
  tally.refused = json["refused"].get<std::int64_t>();
  for (const auto& [path, count] : json["calls"].items()) {
    if (!isCount(count)) return {};
    tally.calls[path] = count.get<std::int64_t>();
  }
  return tally;
}

std::optional<Tally> fetchTally(const std::string& url) {
  const auto [server, base] = splitUrl(url);
  httplib::Client client(server);
  client.set_connection_timeout(kServerAnswerTime);
  client.set_read_timeout(kServerAnswerTime);
  client.set_write_timeout(kServerAnswerTime);
  std::string body;
  // A server may be anything: neither its reply nor the time for it is without bounds.
  const auto deadline = SteadyClock::now() + kServerAnswerTime;
  const auto result = client.Get(base + kTallyPath, [&](const char* data, std::size_t count) {
    body.append(data, count);
    return body.size() <= kMaxReplyBytes && SteadyClock::now() < deadline;
  });
  if (!result && result.error() != httplib::Error::Canceled) {
    throw RunError("the server at " + url + " does not answer (" +
                   httplib::to_string(result.error()) + ")");
  }
  if (!result || result->status != kOk) return std::nullopt;
  return tallyFromReply(body);
}

Tally waitForCalls(const std::string& url, const Tally& before,
                   const std::map<std::string, std::int64_t>& expected,
                   std::chrono::milliseconds time) {
  const auto deadline = SteadyClock::now() + time;
  for (;;) {
    const auto tally = fetchTally(url);
    if (!tally) throw RunError("the server at " + url + " keeps no tally any more");
    Tally calls = since(before, *tally);
    if (missingCalls(expected, calls) == 0 || SteadyClock::now() >= deadline) return calls;
    std::this_thread::sleep_for(kAskAgainAfter);
  }
}

}  // namespace demo_host
