#include "apps/risk_server/console_server/captures_handler.h"

#include <set>
#include <utility>

#include "apps/risk_server/captures/capture.h"
#include "apps/risk_server/captures/har.h"
#include "apps/risk_server/http/json_reply.h"
#include "apps/risk_server/http/request_target.h"

namespace risk_server {
namespace {

constexpr std::string_view kExportPath = "/control/export";
constexpr std::string_view kImportPath = "/control/import";

// The "ids" of the body; none for all.
std::optional<std::set<std::uint64_t>> wantedIds(const std::string& body) {
  if (body.empty()) return std::nullopt;
  const Json given = readServerJson(body, "the body");
  const Json* ids = findMember(given, "ids");
  if (ids == nullptr || !ids->is_array()) throw InputError("ids: expected an array");
  std::set<std::uint64_t> wanted;
  for (const Json& id : *ids) {
    if (!id.is_number_unsigned()) throw InputError("ids: expected numbers of exchanges");
    wanted.insert(id.get<std::uint64_t>());
  }
  return wanted;
}

}  // namespace

bool CapturesHandler::answers(const std::string& path) {
  return path == kExportPath || path == kImportPath;
}

HttpReply CapturesHandler::answer(const HttpRequest& request) const {
  if (!request.fault.empty()) return refusedReply(request.faultStatus, request.fault);
  const bool isExport = pathOfTarget(request.target) == kExportPath;
  if (request.method != "POST" && !(isExport && request.method == "GET")) {
    return refusedReply(405, "only POST is expected", isExport ? "GET, POST" : "POST");
  }
  try {
    return isExport ? exportCapture(request) : importCapture(request);
  } catch (const InputError& error) {
    return refusedReply(400, error.what());
  }
}

HttpReply CapturesHandler::exportCapture(const HttpRequest& request) const {
  const std::string format = queryValue(request.target, "format").value_or("jsonl");
  if (format != "jsonl" && format != "har") throw InputError("format: expected jsonl or har");
  const bool isHar = format == "har";
  const bool isPlain = queryValue(request.target, "plain") == "1";
  const auto ids = wantedIds(request.body);
  // Shared, not copied; the text is made one exchange after the other as it is sent.
  auto kept = parts_.log.newest(kMaxKeptExchanges,
                                [&](const Exchange& e) { return !ids || ids->contains(e.id); });
  HttpReply reply;
  reply.headers.emplace_back("Content-Type", isHar ? "application/json" : "application/jsonl");
  reply.headers.emplace_back("Content-Disposition",
                             "attachment; filename=\"capture." + format + "\"");
  reply.stream = [this, isHar, isPlain, kept = std::move(kept),
                  url = parts_.state.url()](ReplySink& sink) {
    if (isHar && !sink.send(harBegin())) return;
    for (std::size_t i = 0; i < kept.size(); ++i) {
      const Exchange& whole = *kept[i].exchange;
      const Exchange exchange = isPlain ? whole : parts_.masker.masked(whole);
      const std::string text = dumpServerJson(isHar ? harEntry(exchange, kept[i].outcome, url)
                                                    : exchangeToJson(exchange, kept[i].outcome));
      const std::string begin = !isHar ? "" : i == 0 ? "\n" : ",\n";
      if (!sink.send(begin + text + (isHar ? "" : "\n"))) return;
    }
    if (isHar) (void)sink.send(harEnd());
  };
  return reply;
}

HttpReply CapturesHandler::importCapture(const HttpRequest& request) const {
  const bool isMasked = queryValue(request.target, "masked") == "1";
  const Capture capture = readCapture(request.body, parts_.contract);
  Json entries = Json::array();
  for (const CapturedExchange& captured : capture.exchanges) {
    const Exchange& whole = captured.exchange;
    entries.push_back(
        captureEntry(isMasked ? parts_.masker.masked(whole) : whole, captured.outcome));
  }
  Json read = Json::object();
  read["entries"] = std::move(entries);
  read["skipped"] = capture.skipped;
  return jsonReply(read);
}

}  // namespace risk_server
