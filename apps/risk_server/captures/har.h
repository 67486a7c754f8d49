// HTTP Archive 1.2, as browsers and proxies write it.
#pragma once

#include <string>
#include <string_view>

#include "apps/risk_server/captures/capture.h"

namespace risk_server {

bool looksLikeHar(std::string_view text);

// Appends the entries that are calls of the contract, whatever stands in front of the service's
// path in their URL, and counts the others. Throws InputError naming the entry.
void readHar(std::string_view text, const Contract& contract, Capture& capture);

// The text around the entries, which are joined by commas.
std::string_view harBegin();
std::string_view harEnd();

// `url` is that of the server, with its last slash. What HAR has no place for (the rule, a fault on
// demand, bytes that are no text) stands under "_exchange".
Json harEntry(const Exchange& exchange, const ReplyOutcome& outcome, const std::string& url);

}  // namespace risk_server
