#include "apps/risk_server/server_arguments.h"

#include <charconv>
#include <map>
#include <system_error>

#include "apps/risk_server/faults/fault_reader.h"

namespace risk_server {
namespace {

constexpr int kMaxPort = 65535;

using OptionSetter = void (*)(RiskServerOptions& options, const std::string& value);

int portFromText(const std::string& text) {
  int port = -1;
  const char* end = text.data() + text.size();
  const auto [stopped, error] = std::from_chars(text.data(), end, port);
  if (error != std::errc() || stopped != end || port < 0 || port > kMaxPort) {
    throw InputError("--port: expected a number from 0 to 65535, got \"" + text + "\"");
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

void addControlHost(RiskServerOptions& options, const std::string& name) {
  if (name.find_first_of(":/ ") != std::string::npos) {
    throw InputError("--control-host: expected the name of a host, without a port, got \"" + name +
                     "\"");
  }
  options.guard.moreHosts.push_back(name);
}

const std::map<std::string, OptionSetter>& optionSetters() {
  static const std::map<std::string, OptionSetter> kSetters = {
      {"--port", [](RiskServerOptions& o, const std::string& v) { o.port = portFromText(v); }},
      {"--config", setConfigFile},
      {"--rules", setRulesFile},
      {"--contract", setContractFile},
      {"--signing-key", [](RiskServerOptions& o, const std::string& v) { o.signingKey = v; }},
      {"--log", [](RiskServerOptions& o, const std::string& v) { o.logFile = v; }},
      {"--control-host", addControlHost},
      {"--console-token", [](RiskServerOptions& o, const std::string& v) { o.guard.token = v; }},
  };
  return kSetters;
}

}  // namespace

std::string usageText() {
  return "usage: risk_server [options]\n"
         "\n"
         "A local stand-in for the risk server, on 127.0.0.1 only.\n"
         "\n"
         "  --port N           listen on this port; 0, the default, takes a free one\n"
         "  --config FILE      the configuration that clients get, a JSON object\n"
         "  --rules FILE       the verdicts, a JSON array of rules; the first that applies "
         "decides\n"

         "  --faults FILE      what goes wrong, a JSON array of faults\n"
         "  --contract FILE    what calls must look like\n"
         "  --signing-key TEXT the key of signed verdicts and device identifiers; random by "
         "default\n"
         "  --log FILE         append a JSON line for every call and its reply\n"
         "  --control-host NAME    serve the control path under this name of the machine too\n"
         "  --console-token TEXT   the control path wants \"Authorization: Bearer TEXT\"\n"
         "  --help             print this\n"
         "\n"
         "When it listens it prints \"risk server ready at http://127.0.0.1:PORT/\".\n"
         "Control, below that URL:\n"
         "  GET /control/tally, GET /control/health   tell about it\n"
         "  POST /control/config, /control/rules      replace the configuration, the rules\n"
         "  POST /control/faults                      replaces the faults; GET shows how often "
         "each\n"
         "                                            was applied, DELETE clears them\n"
         "  POST /control/restart {\"downMs\": N}       refuses connections for that time\n"
         "docs/risk_server.md explains rules and faults. SIGTERM and SIGINT stop it.\n";
}

std::optional<RiskServerOptions> optionsFromArguments(const std::vector<std::string>& arguments) {
  RiskServerOptions options;
  std::string faultsFile;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string& name = arguments[i];
    if (name == "--help") return std::nullopt;
    const auto setter = optionSetters().find(name);
    const bool isFaults = name == "--faults";
    if (setter == optionSetters().end() && !isFaults)
      throw InputError(name + ": no such option, see --help");
    if (i + 1 == arguments.size()) throw InputError(name + ": its value is missing");
    const std::string& value = arguments[++i];
    if (value.empty()) throw InputError(name + ": its value is empty");
    if (isFaults) {
      faultsFile = value;
    } else {
      setter->second(options, value);
    }
  }
  // Last: its paths are those of the contract.
  if (!faultsFile.empty()) setFaultsFile(options, faultsFile);
  return options;
}

}  // namespace risk_server
