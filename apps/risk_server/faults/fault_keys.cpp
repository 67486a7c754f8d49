#include "apps/risk_server/faults/fault_keys.h"

#include <algorithm>
#include <array>
#include <map>
#include <memory>
#include <string>
#include <utility>

#include "apps/risk_server/http/text_codecs.h"

namespace risk_server {
namespace {

constexpr int kLeastStatus = 200;  // lower ones announce another reply
constexpr int kMostStatus = 599;

[[noreturn]] void refuseFault(const std::string& place, const std::string& reason) {
  throw InputError(place + ": " + reason);
}

std::string faultText(const Json& value, const std::string& place) {
  if (!value.is_string()) refuseFault(place, "expected a text, got " + quoteForMessage(value));
  return value.get<std::string>();
}

std::uint64_t faultNumber(const Json& value, const std::string& place, std::uint64_t least,
                          std::uint64_t most) {
  const bool fits = value.is_number_unsigned() && value.get<std::uint64_t>() >= least &&
                    value.get<std::uint64_t>() <= most;
  if (fits) return value.get<std::uint64_t>();
  const std::string upTo = most == kUnlimited ? "" : " to " + std::to_string(most);
  refuseFault(place, "expected a number from " + std::to_string(least) + upTo + ", got " +
                         quoteForMessage(value));
}

void requireTrue(const Json& value, const std::string& place) {
  if (value != Json(true)) refuseFault(place, "expected true, got " + quoteForMessage(value));
}

// --- bodies

std::function<std::string()> fixedBody(std::string bytes) {
  // Shared: copies of a fault need no copy of its body.
  return [kept = std::make_shared<const std::string>(std::move(bytes))] { return *kept; };
}

std::string oversizeBody(std::size_t bytes) {
  constexpr std::string_view kFront = R"({"response":"OK","filler":")";
  constexpr std::string_view kBack = R"("})";
  std::string body(kFront);
  body.append(bytes - std::min(bytes, kFront.size() + kBack.size()), 'x');
  return body.append(kBack);
}

std::size_t leastOversize() { return oversizeBody(0).size(); }

std::string nestedBody(std::size_t depth) {
  return std::string(depth, '[') + std::string(depth, ']');
}

void readOversize(Fault& fault, const Json& value, const std::string& place) {
  const std::size_t bytes = faultNumber(value, place, leastOversize(), kMaxMadeBodyBytes);
  fault.body = [bytes] { return oversizeBody(bytes); };
}

void readNested(Fault& fault, const Json& value, const std::string& place) {
  const std::size_t depth = faultNumber(value, place, 1, kMaxMadeBodyBytes / 2);
  fault.body = [depth] { return nestedBody(depth); };
}

void readBodyBytes(Fault& fault, const Json& value, const std::string& place) {
  auto bytes = bytesFromHex(faultText(value, place));
  if (!bytes) refuseFault(place, "expected pairs of hexadecimal digits");
  fault.body = fixedBody(std::move(*bytes));
}

void readEmptyBody(Fault& fault, const Json& value, const std::string& place) {
  requireTrue(value, place);
  fault.body = fixedBody("");
}

// --- head and transfer of the reply

bool isHeaderName(const std::string& name) {
  return !name.empty() && std::all_of(name.begin(), name.end(), [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-';
  });
}

// What the parser writes by itself would stand twice, and the client would misread what follows.
bool framesTheReply(const std::string& name) {
  constexpr std::array<std::string_view, 4> kFraming = {"content-length", "transfer-encoding",
                                                        "connection", "keep-alive"};
  return std::any_of(kFraming.begin(), kFraming.end(),
                     [&](std::string_view framing) { return equalWithoutCase(name, framing); });
}

void readHeaders(Fault& fault, const Json& value, const std::string& place) {
  if (!value.is_object()) refuseFault(place, "expected an object of texts");
  for (const auto& [name, text] : value.items()) {
    const std::string own = memberPlace(place, name);
    if (!isHeaderName(name)) refuseFault(own, "is no name of a header");
    if (framesTheReply(name)) refuseFault(own, "cannot be set");
    const std::string line = faultText(text, own);
    const auto isControl = [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; };
    if (std::any_of(line.begin(), line.end(), isControl))
      refuseFault(own, "has control characters");
    fault.headers.emplace_back(name, line);
  }
}

void readLatency(Fault& fault, const Json& value, const std::string& place) {
  constexpr std::chrono::milliseconds kMost = kMaxReplyHold;
  const auto given = faultNumber(value, place, 1, static_cast<std::uint64_t>(kMost.count()));
  fault.delivery.latency = std::chrono::milliseconds(given);
}

void readCut(Fault& fault, Transfer transfer, const Json& value, const std::string& place) {
  fault.delivery.transfer = transfer;
  fault.delivery.bodyBytes = faultNumber(value, place, 0, kMaxMadeBodyBytes);
}

void readTrickle(Fault& fault, const Json& value, const std::string& place) {
  fault.delivery.transfer = Transfer::kTrickle;
  fault.delivery.bytesPerSecond = faultNumber(value, place, 1, kMaxTrickle);
}

// --- the language

FaultKey switchKey(Transfer transfer) {
  return {KeyRole::kTransfer,
          [transfer](Fault& fault, const Json& value, const std::string& place) {
            requireTrue(value, place);
            fault.delivery.transfer = transfer;
          }};
}

FaultKey cutKey(Transfer transfer) {
  return {KeyRole::kTransfer,
          [transfer](Fault& fault, const Json& value, const std::string& place) {
            readCut(fault, transfer, value, place);
          }};
}

FaultKey countKey(std::uint64_t Fault::*count, std::uint64_t least) {
  return {KeyRole::kScope, [=](Fault& fault, const Json& value, const std::string& place) {
            fault.*count = faultNumber(value, place, least, kUnlimited);
          }};
}

FaultKey textKey(std::string Fault::*text) {
  return {KeyRole::kScope, [=](Fault& fault, const Json& value, const std::string& place) {
            fault.*text = faultText(value, place);
          }};
}

std::map<std::string, FaultKey> makeFaultKeys() {
  const auto readStatus = [](Fault& fault, const Json& value, const std::string& place) {
    fault.status = static_cast<int>(faultNumber(value, place, kLeastStatus, kMostStatus));
  };
  const auto readBody = [](Fault& fault, const Json& value, const std::string& place) {
    fault.body = fixedBody(faultText(value, place));
  };
  const auto readReply = [](Fault& fault, const Json& value, const std::string&) {
    fault.body = fixedBody(dumpServerJson(value));
  };
  const auto readAcceptAndClose = [](Fault& fault, const Json& value, const std::string& place) {
    requireTrue(value, place);
    fault.atAccept = true;
  };
  return {
      {"path", textKey(&Fault::path)},
      {"name", textKey(&Fault::name)},
      {"skip", countKey(&Fault::skip, 0)},
      {"first", countKey(&Fault::first, 1)},
      {"times", countKey(&Fault::times, 1)},
      {"latency", {KeyRole::kHead, readLatency}},
      {"status", {KeyRole::kHead, readStatus}},
      {"headers", {KeyRole::kHead, readHeaders}},
      {"body", {KeyRole::kBody, readBody}},
      {"bodyBytes", {KeyRole::kBody, readBodyBytes}},
      {"emptyBody", {KeyRole::kBody, readEmptyBody}},
      {"reply", {KeyRole::kBody, readReply}},
      {"oversize", {KeyRole::kBody, readOversize}},
      {"nested", {KeyRole::kBody, readNested}},
      {"resetBeforeReply", switchKey(Transfer::kReset)},
      {"closeWithoutReply", switchKey(Transfer::kClose)},
      {"hang", switchKey(Transfer::kHang)},
      {"resetInBody", cutKey(Transfer::kCutThenReset)},
      {"cutBody", cutKey(Transfer::kCutThenClose)},
      {"trickle", {KeyRole::kTransfer, readTrickle}},
      {"acceptAndClose", {KeyRole::kTransfer, readAcceptAndClose}},
  };
}

}  // namespace

const std::map<std::string, FaultKey>& faultKeys() {
  static const std::map<std::string, FaultKey> kKeys = makeFaultKeys();
  return kKeys;
}

}  // namespace risk_server
