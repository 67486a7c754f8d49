#include "core/response_text.h"

#include "base/debug.h"

namespace quorvance {

std::string responseText(const ResponceObject& response) {
  return response.output ? textOf(*response.output) : "nil";
}

void printResponse(const ResponceObject& response) {
  if (isInDebugMode()) debugPrint("QuorvanceManager response: " + responseText(response));
}

void appendResponse(TraceContinuation& trace, const ResponceObject& response) {
  if (trace.isEnabled()) trace.append("response: " + responseText(response));
}

}  // namespace quorvance
