// The command line of the risk server.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "apps/risk_server/risk_server.h"

namespace risk_server {

std::string usageText();

struct ReportOrder {
  std::filesystem::path capture;
  std::filesystem::path file;
  bool isPlain = false;  // keep personal data
};

// What the program is to do: check a capture, write a report, or else serve.
struct CommandLine {
  RiskServerOptions options;
  std::optional<std::filesystem::path> check;
  std::optional<ReportOrder> report;
};

// Reads the files that are named. Nothing when help is asked for. Throws InputError naming the
// argument, or the file and the place.
std::optional<CommandLine> commandLineFrom(const std::vector<std::string>& arguments);

}  // namespace risk_server
