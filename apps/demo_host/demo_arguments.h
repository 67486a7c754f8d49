// The command line of the demo.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace demo_host {

struct DemoOptions {
  std::filesystem::path journey;
  // A running server; its last slash may be missing. Absent: `riskServer` is started.
  std::optional<std::string> serverUrl;
  std::filesystem::path riskServer;
  // Handed to the started risk server.
  std::optional<std::filesystem::path> logFile;
  // Absent: a temporary folder, so that every demo begins on a fresh device.
  std::optional<std::filesystem::path> dataFolder;
  bool debug = false;
  // Screens are replayed without waiting.
  bool fast = false;
  // No journey: what the library tells of this device is printed, for people or for programs.
  bool inspect = false;
  bool json = false;
  // Whether the started risk server, and its console, stay when the journey is over.
  bool stays = false;
  // Whether a browser is opened on that console.
  bool opensConsole = false;
  // A page of everything that the started risk server saw.
  std::optional<std::filesystem::path> report;
  // Whether that page keeps personal data.
  bool reportIsPlain = false;
};

std::string demoUsage();

// Nothing when help is asked for. Throws InputError naming the argument.
std::optional<DemoOptions> parseDemoArguments(const std::vector<std::string>& arguments);

}  // namespace demo_host
