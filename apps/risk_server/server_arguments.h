// The command line of the risk server.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "apps/risk_server/risk_server.h"

namespace risk_server {

std::string usageText();

// Reads the files that are named. Nothing when help is asked for. Throws InputError naming the
// argument, or the file and the place.
std::optional<RiskServerOptions> optionsFromArguments(const std::vector<std::string>& arguments);

}  // namespace risk_server
