// The data files that are built into the risk server.
#pragma once

#include <string_view>

namespace risk_server {

std::string_view embeddedContract();  // contract.json
std::string_view embeddedRules();     // default_rules.json
std::string_view embeddedConfig();    // default_config.json

}  // namespace risk_server
