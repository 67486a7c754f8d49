// The data files that are built into the risk server.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace risk_server {

std::string_view embeddedContract();  // contract.json
std::string_view embeddedRules();     // default_rules.json
std::string_view embeddedConfig();    // default_config.json

struct EmbeddedFile {
  std::string path;  // below its folder, with slashes
  std::string text;
};

// The console's page: everything under console/ but its tests.
const std::vector<EmbeddedFile>& embeddedConsole();

}  // namespace risk_server
