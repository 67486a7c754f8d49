#include "network/call_outcome.h"

#include <utility>

#include "base/json.h"
#include "base/text.h"

namespace quorvance {
namespace {

constexpr int kOk = 200;

PlatformError parseFailure() {
  return {"QuorvanceJson", kParseFailureCode, "The reply is no JSON.", std::nullopt};
}

void takeBody(CallOutcome& outcome, const std::string& body) {
  std::optional<Json> value = parseJson(body);
  if (!value) {
    outcome.response.error = kParseFailureCode;
    outcome.parseError = parseFailure();
    return;
  }
  const JsonDiscarder discarder(value);
  if (!value->is_object()) return;
  if (const std::string* requestId = findText(*value, "requestID")) {
    outcome.response.requestId = *requestId;
  }
  outcome.response.output = std::move(value);
}

}  // namespace

CallOutcome decideOutcome(HttpReply reply, std::string requestId, std::string url) {
  CallOutcome outcome;
  outcome.response.requestId = std::move(requestId);
  outcome.response.url = std::move(url);
  outcome.response.statusCode = reply.status;
  if (reply.transportError || !reply.body) {
    outcome.response.error = kTransportErrorCode;
    outcome.response.transportFault = reply.fault;
    outcome.isCommunicationError = true;
    outcome.transportError = std::move(reply.transportError);
    outcome.isPrinted = false;
  } else if (reply.status != kOk || !isUtf8(*reply.body)) {
    // A reply of status 200 that is not UTF-8 ends with error 200.
    outcome.response.error = reply.status;
    outcome.isCommunicationError = true;
  } else {
    takeBody(outcome, *reply.body);
  }
  return outcome;
}

}  // namespace quorvance
