#include "apps/demo_host/demo_arguments.h"

#include <unistd.h>

#include <map>

#include "apps/demo_host/demo_errors.h"
#include "apps/demo_host/server_url.h"

namespace demo_host {
namespace {

using OptionSetter = void (*)(DemoOptions& options, const std::string& value);

const std::map<std::string, OptionSetter>& valueSetters() {
  static const std::map<std::string, OptionSetter> kSetters = {
      {"--server", [](DemoOptions& o, const std::string& value) { o.serverUrl = value; }},
      {"--risk-server", [](DemoOptions& o, const std::string& value) { o.riskServer = value; }},
      {"--log", [](DemoOptions& o, const std::string& value) { o.logFile = value; }},
      {"--data-folder", [](DemoOptions& o, const std::string& value) { o.dataFolder = value; }},
      {"--report", [](DemoOptions& o, const std::string& value) { o.report = value; }},
  };
  return kSetters;
}

const std::map<std::string, bool DemoOptions::*>& flags() {
  static const std::map<std::string, bool DemoOptions::*> kFlags = {
      {"--debug", &DemoOptions::debug},       {"--stay", &DemoOptions::stays},
      {"--open", &DemoOptions::opensConsole}, {"--plain", &DemoOptions::reportIsPlain},
      {"--inspect", &DemoOptions::inspect},   {"--json", &DemoOptions::json},
      {"--fast", &DemoOptions::fast},
  };
  return kFlags;
}

void takeJourney(DemoOptions& options, const std::string& argument) {
  if (argument.starts_with("-")) throw InputError(argument + ": no such option, see --help");
  if (argument.empty()) throw InputError("the journey's name is empty");
  if (!options.journey.empty()) throw InputError(argument + ": one journey at a time");
  options.journey = argument;
}

void checkRiskServer(const std::filesystem::path& program) {
  if (program.empty()) throw InputError("give --server URL, or --risk-server PROGRAM to start one");
  std::error_code error;
  if (!std::filesystem::is_regular_file(program, error) || access(program.c_str(), X_OK) != 0) {
    throw InputError("--risk-server: " + program.string() + " is no program");
  }
}

void checkTogether(const DemoOptions& options) {
  if (options.json && !options.inspect) throw InputError("--json: only with --inspect");
  if (options.inspect) {
    if (!options.journey.empty()) throw InputError("--inspect: it plays no journey");
    return;
  }
  if (options.journey.empty()) throw InputError("which journey? See --help");
  if (options.reportIsPlain && !options.report) throw InputError("--plain: only with --report");
  if (options.opensConsole && !options.stays) throw InputError("--open: only with --stay");
  if (!options.serverUrl) return checkRiskServer(options.riskServer);
  if (options.logFile) throw InputError("--log: a server that runs already keeps its own log");
  if (options.stays) throw InputError("--stay: a server that runs already stays anyway");
  if (options.report)
    throw InputError("--report: of a server that runs already, its console exports");
  const std::string fault = faultOfServerUrl(*options.serverUrl);
  if (!fault.empty()) throw InputError("--server: \"" + *options.serverUrl + "\": " + fault);
}

}  // namespace

std::string demoUsage() {
  return "usage: demo_host JOURNEY.json [options]\n"
         "       demo_host --inspect [--json] [--debug]\n"
         "\n"
         "Plays a user's journey through the library, against a risk server; or tells what the\n"
         "library would tell of this device, and sends nothing.\n"
         "\n"
         "  --server URL           a server that runs already (--risk-server is then ignored)\n"
         "  --risk-server PROGRAM  start this risk server on a free port, and end it afterwards\n"
         "  --log FILE             the started risk server appends every call to FILE\n"
         "  --data-folder FOLDER   where the library keeps its state; a temporary folder by "
         "default\n"
         "  --stay                 the started risk server and its console stay afterwards, until "
         "a "
         "key\n"
         "                         is pressed or a signal comes\n"
         "  --open                 with --stay: open the console in a browser\n"
         "  --report FILE.html     make a page of everything that the started risk server saw, "
         "without "
         "personal\n"
         "                         data unless --plain\n"
         "  --debug                the library prints its diagnostic lines; it tells more fields\n"
         "  --fast                 screens are replayed without waiting, at their recorded times\n"
         "  --inspect              print every field with its source, its cost, and what it is "
         "sent "
         "with\n"
         "  --json                 the same for programs\n"
         "  --help, -h             print this\n"
         "\n"
         "exit status:\n"
         "  0  the journey was played, every verdict was as expected, no call was refused\n"
         "  1  a verdict was not as expected, a call was refused or lost, or the server is dead\n"
         "  2  the command line or the journey is wrong, or the data folder cannot be used; "
         "nothing\n"
         "     was started or sent\n";
}

std::optional<DemoOptions> parseDemoArguments(const std::vector<std::string>& arguments) {
  DemoOptions options;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string& name = arguments[i];
    if (name == "--help" || name == "-h") return std::nullopt;
    const auto setter = valueSetters().find(name);
    const auto flag = flags().find(name);
    if (flag != flags().end()) {
      options.*flag->second = true;
    } else if (setter == valueSetters().end()) {
      takeJourney(options, name);
    } else if (i + 1 == arguments.size() || arguments[i + 1].empty()) {
      throw InputError(name + ": its value is missing");
    } else {
      setter->second(options, arguments[++i]);
    }
  }
  checkTogether(options);
  return options;
}

}  // namespace demo_host
