#include "apps/risk_server/server_arguments.h"

#include <gtest/gtest.h>

#include "platform/testing/temporary_folder_test_support.h"

namespace risk_server {
namespace {

class ArgumentFiles : public quorvance::TemporaryFolder {
 public:
  std::string write(const std::string& name, const std::string& text) const {
    put(name, text);
    return at(name);
  }
};

std::string faultOfArguments(const std::vector<std::string>& arguments) {
  try {
    commandLineFrom(arguments);
  } catch (const InputError& error) {
    return error.what();
  }
  return "";
}

TEST(ServerArgumentsTest, takesEveryOption) {
  const ArgumentFiles files;
  const auto line = commandLineFrom(
      {"--port",          "65535",
       "--config",        files.write("config", R"({"a": 1})"),
       "--rules",         files.write("rules", R"([{"risk": "HIGH"}])"),
       "--contract",      files.write("contract", R"({"contentType": "t", "calls": {}})"),
       "--signing-key",   "k",
       "--log",           "l",
       "--console-port",  "off",
       "--control-host",  "lab",
       "--console-token", "t",
       "--faults",        files.write("faults", R"([{"path": "*", "status": 500}])")});
  ASSERT_TRUE(line);
  const RiskServerOptions* options = &line->options;
  EXPECT_EQ(options->port, 65535);
  EXPECT_EQ(options->configuration.dump(), R"({"a":1})");
  EXPECT_EQ(options->rules.decide({}).risk, 2);
  EXPECT_TRUE(options->contract.calls().empty());
  ASSERT_EQ(options->faults.size(), 1U);
  EXPECT_EQ(options->faults.front().status, 500);
  EXPECT_EQ(options->signingKey, "k");
  EXPECT_EQ(options->logFile, "l");
  EXPECT_FALSE(options->consolePort);
  EXPECT_EQ(options->guard.moreHosts, std::vector<std::string>{"lab"});
  EXPECT_EQ(options->guard.token, "t");
  EXPECT_EQ(commandLineFrom({})->options.consolePort, 0);
  EXPECT_FALSE(commandLineFrom({"--help"}));
  const auto report = commandLineFrom({"--report-from", "in", "out", "--plain"})->report;
  EXPECT_EQ(report->capture, "in");
  EXPECT_EQ(report->file, "out");
  EXPECT_TRUE(report->isPlain);
  EXPECT_EQ(commandLineFrom({"--check", "in"})->check, "in");
}

TEST(ServerArgumentsTest, refusesWrongArguments) {
  EXPECT_EQ(faultOfArguments({"--prot", "1"}), "--prot: no such option, see --help");
  EXPECT_EQ(faultOfArguments({"--port"}), "--port: its value is missing");
  EXPECT_EQ(faultOfArguments({"--report-from", "in"}), "--report-from: its value is missing");
  EXPECT_EQ(faultOfArguments({"--plain"}), "--plain: only with --report-from");
  EXPECT_EQ(faultOfArguments({"--console-port", "on"}).find("--console-port: expected"), 0U);
  EXPECT_NE(faultOfArguments({"--control-host", "a:1"}), "");
  EXPECT_EQ(faultOfArguments({"--signing-key", ""}), "--signing-key: its value is empty");
  for (const char* port : {"65536", "-1", "80x", "+5"}) {
    EXPECT_EQ(faultOfArguments({"--port", port}).find("--port: expected a number"), 0U) << port;
  }
}

TEST(ServerArgumentsTest, namesTheFileAndThePlaceOfAFault) {
  const ArgumentFiles files;
  const std::string list = files.write("list", "[\n 7]");
  const std::string broken = files.write("broken", "{\n\"a\": }");
  EXPECT_EQ(faultOfArguments({"--config", list}), list + ": expected an object");
  EXPECT_EQ(faultOfArguments({"--rules", list}), list + ": [0]: expected an object");
  EXPECT_EQ(faultOfArguments({"--rules", broken}).find(broken + ": parse error at line 2"), 0U);
  EXPECT_EQ(faultOfArguments({"--config", files.path()}), files.path() + ": is a folder");
}

TEST(ServerArgumentsTest, faultsAreOfTheContractWhateverTheOrder) {
  const ArgumentFiles files;
  const std::string own = files.write("contract", R"({"contentType": "t",
      "calls": {"/own": {"reply": "accepted", "body": "any"}}})");
  const std::string faults = files.write("faults", R"([{"path": "/own", "hang": true}])");
  EXPECT_EQ(faultOfArguments({"--faults", faults, "--contract", own}), "");
  EXPECT_EQ(faultOfArguments({"--faults", faults}), faults + ": [0].path: no service at \"/own\"");
}

}  // namespace
}  // namespace risk_server
