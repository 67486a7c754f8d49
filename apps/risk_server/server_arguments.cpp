#include "apps/risk_server/server_arguments.h"

#include <charconv>
#include <map>
#include <system_error>

#include "apps/risk_server/faults/fault_reader.h"

namespace risk_server {
namespace {

constexpr int kMaxPort = 65535;

using OptionSetter = void (*)(RiskServerOptions& options, const std::string& value);

int portFromText(const std::string& option, const std::string& text) {
  int port = -1;
  const char* end = text.data() + text.size();
  const auto [stopped, error] = std::from_chars(text.data(), end, port);
  if (error != std::errc() || stopped != end || port < 0 || port > kMaxPort) {
    throw InputError(option + ": expected a number from 0 to 65535, got \"" + text + "\"");
  }
  return port;
}

void setConfigFile(RiskServerOptions& options, const std::string& file) {
  options.configuration = loadServerJson(file);
  if (!options.configuration.is_object()) throw InputError(file + ": expected an object");
}

void setRulesFile(RiskServerOptions& options, const std::string& file) {
  const Json json = loadServerJson(file);
  try {
    options.rules = VerdictRules::fromJson(json);
  } catch (const InputError& error) {
    throw InputError(file + ": " + error.what());
  }
}

void setContractFile(RiskServerOptions& options, const std::string& file) {
  const Json json = loadServerJson(file);
  try {
    options.contract = Contract::fromJson(json);
  } catch (const InputError& error) {
    throw InputError(file + ": " + error.what());
  }
}

void setFaultsFile(RiskServerOptions& options, const std::string& file) {
  const Json json = loadServerJson(file);
  try {
    options.faults = readFaults(json, options.contract);
  } catch (const InputError& error) {
    throw InputError(file + ": " + error.what());
  }
}

void setConsolePort(RiskServerOptions& options, const std::string& value) {
  options.consolePort.reset();
  if (value != "off") options.consolePort = portFromText("--console-port", value);
}

void addControlHost(RiskServerOptions& options, const std::string& name) {
  if (name.find_first_of(":/ ") != std::string::npos) {
    throw InputError("--control-host: expected the name of a host, without a port, got \"" + name +
                     "\"");
  }
  options.guard.moreHosts.push_back(name);
}

const std::map<std::string, OptionSetter>& optionSetters() {
  static const std::map<std::string, OptionSetter> kSetters = {
      {"--port",
       [](RiskServerOptions& o, const std::string& v) { o.port = portFromText("--port", v); }},
      {"--config", setConfigFile},
      {"--rules", setRulesFile},
      {"--contract", setContractFile},
      {"--signing-key", [](RiskServerOptions& o, const std::string& v) { o.signingKey = v; }},
      {"--log", [](RiskServerOptions& o, const std::string& v) { o.logFile = v; }},
      {"--console-port", setConsolePort},
      {"--control-host", addControlHost},
      {"--console-token", [](RiskServerOptions& o, const std::string& v) { o.guard.token = v; }},
  };
  return kSetters;
}

// The arguments, taken one after the other.
class ArgumentReader {
 public:
  explicit ArgumentReader(const std::vector<std::string>& arguments) : arguments_(arguments) {}

  bool isAtEnd() const { return next_ == arguments_.size(); }
  const std::string& take() { return arguments_[next_++]; }
  // The value of the option `name`.
  const std::string& takeValue(const std::string& name) {
    if (isAtEnd()) throw InputError(name + ": its value is missing");
    if (arguments_[next_].empty()) throw InputError(name + ": its value is empty");
    return take();
  }

 private:
  const std::vector<std::string>& arguments_;
  std::size_t next_ = 0;
};

void checkTogether(const CommandLine& line, bool isPlain) {
  if (line.check && line.report) throw InputError("--check: not together with --report-from");
  if (isPlain && !line.report) throw InputError("--plain: only with --report-from");
}

}  // namespace

std::string usageText() {
  return R"(usage: risk_server [options]
       risk_server --check LOG [--contract FILE]
       risk_server --report-from LOG FILE.html [--plain]

A local stand-in for the risk server, on 127.0.0.1 only. With --check it tells what in a capture (its
own log, or a HAR file of any proxy) breaks the contract, and ends with 1 if anything does; with
--report-from it makes a page of one that can be handed on, without personal data unless --plain.

  --port N               listen on this port; 0, the default, takes a free one
  --config FILE          the configuration that clients get, a JSON object
  --rules FILE           the verdicts, a JSON array of rules; the first that applies decides
  --faults FILE          what goes wrong, a JSON array of faults
  --contract FILE        what calls must look like
  --signing-key TEXT     the key of signed verdicts and device identifiers; random by default
  --log FILE             append a JSON line for every call and its reply
  --console-port N       the console's page on this port; a free one by default, "off" for none
  --control-host NAME    serve console and control path under this name of the machine too
  --console-token TEXT   the control path wants "Authorization: Bearer TEXT"
  --help, -h             print this
  --version              print the version

When it listens it prints "risk server ready at http://127.0.0.1:PORT/", then "console at URL":
open that one in a browser. Control, below the first URL:
  GET /control/tally, GET /control/health   tell about it
  POST /control/config, /control/rules      replace the configuration, the rules
  POST /control/faults                      replaces the faults; GET shows how often each was
                                            applied, DELETE clears them
  POST /control/restart {"downMs": N}       refuses connections for that time
docs/risk_server.md explains rules, faults and the console. SIGTERM and SIGINT stop it.
)";
}

std::optional<CommandLine> commandLineFrom(const std::vector<std::string>& arguments) {
  CommandLine line;
  line.options.consolePort = 0;
  std::string faultsFile;
  bool isPlain = false;
  for (ArgumentReader reader(arguments); !reader.isAtEnd();) {
    const std::string& name = reader.take();
    if (name == "--help" || name == "-h") return std::nullopt;
    const auto setter = optionSetters().find(name);
    if (setter != optionSetters().end()) {
      setter->second(line.options, reader.takeValue(name));
    } else if (name == "--faults") {
      faultsFile = reader.takeValue(name);
    } else if (name == "--check") {
      line.check = reader.takeValue(name);
    } else if (name == "--report-from") {
      line.report.emplace();
      line.report->capture = reader.takeValue(name);
      line.report->file = reader.takeValue(name);
    } else if (name == "--plain") {
      isPlain = true;
    } else {
      throw InputError(name + ": no such option, see --help");
    }
  }
  checkTogether(line, isPlain);
  if (line.report) line.report->isPlain = isPlain;
  // Last: its paths are those of the contract.
  if (!faultsFile.empty()) setFaultsFile(line.options, faultsFile);
  return line;
}

}  // namespace risk_server
