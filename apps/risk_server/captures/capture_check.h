// The contract check as a command over a capture.
#pragma once

#include <filesystem>
#include <ostream>

#include "apps/risk_server/contract/contract.h"

namespace risk_server {

// Prints "FILE:WHERE: PATH: PLACE: REASON" for each violation and a last line with the counts.
// Returns the exit status: 0 when there is none, 1 otherwise, and for a capture without a call,
// which proves nothing. Throws InputError when the file
// cannot be read or is no capture.
int checkCapture(const std::filesystem::path& file, const Contract& contract, std::ostream& out);

}  // namespace risk_server
