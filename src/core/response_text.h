#pragma once

#include <string>

#include "diagnostics/operation_trace.h"
#include "network/responce_object.h"

namespace quorvance {

/// The text form of a reply in debug lines and traces.
std::string responseText(const ResponceObject& response);

/// Prints "QuorvanceManager response: " and the reply in debug mode.
void printResponse(const ResponceObject& response);

/// Appends "response: " and the reply.
void appendResponse(TraceContinuation& trace, const ResponceObject& response);

}  // namespace quorvance
