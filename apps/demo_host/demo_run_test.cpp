#include "apps/demo_host/demo_run.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "apps/demo_host/demo_errors.h"
#include "apps/demo_host/inspection_printer.h"
#include "apps/demo_host/journey_player.h"
#include "apps/demo_host/server_process.h"
#include "apps/demo_host/server_tally.h"
#include "apps/demo_host/server_url.h"

namespace demo_host {
namespace {

using quorvance::Risk;
using quorvance::RiskLevel;
using ::testing::HasSubstr;

constexpr const char* kNoJourney = "/nowhere/journey.json";

struct RunOutput {
  int status = -1;
  std::string out;
  std::string error;
};

RunOutput run(const std::vector<std::string>& arguments) {
  std::ostringstream out;
  std::ostringstream error;
  const int status = runDemo(arguments, out, error);
  return {status, out.str(), error.str()};
}

TEST(DemoRunTest, WrongArgumentsEndWithTwoAndSayWhy) {
  const std::pair<std::vector<std::string>, std::string> cases[] = {
      {{"a.json", "b.json"}, "b.json: one journey"},
      {{"a.json", "--servers"}, "--servers: no such option"},
      {{"a.json", "--server"}, "--server: its value is missing"},
      {{"a.json"}, "--server URL, or --risk-server PROGRAM"},
      {{"a.json", "--risk-server", "/nowhere/server"}, "--risk-server: /nowhere/server"},
      {{"a.json", "--server", "ftp://h/"}, "must begin with http"},
      {{"a.json", "--server", "http://h/", "--log", "l"}, "--log"},
      {{"--json", "a.json"}, "--json: only with --inspect"},
      {{"--inspect", "a.json"}, "--inspect: it plays no journey"},
      {{"a.json", "--server", "http://h/", "--stay"}, "--stay"},
      {{"a.json", "--server", "http://h/", "--report", "r"}, "--report"},
      {{"a.json", "--open"}, "--open"},
      {{"a.json", "--plain"}, "--plain"},
      {{kNoJourney, "--server", "http://h/"}, "/nowhere/journey.json: No such file"},
  };
  for (const auto& [arguments, part] : cases) {
    const RunOutput output = run(arguments);
    EXPECT_EQ(output.status, kWrongInput) << output.error;
    EXPECT_THAT(output.error, HasSubstr(part));
    EXPECT_EQ(output.out, "");
  }
  EXPECT_EQ(run({"--help"}).status, kPlayedAsExpected);
}

TEST(InspectionPrinterTest, RecordsHoldWhatIsSentAndTheFieldsEverything) {
  using std::chrono::microseconds;
  const std::vector<quorvance::InspectedField> fields = {
      {"sim_data", "networkType", R"("4G")", true, "modem", microseconds(7), "each session"},
      {"sim_data", "isVoiceCapable", std::nullopt, false, "modem", microseconds(7), "each session"},
      {"settings_data", "installKeyboards", R"(["de"])", false, "file", std::nullopt, "never sent"},
      {"settings_data", "name", "\"" + std::string(60, 'x') + "\u00e9\"", true, "file",
       microseconds(7), "each session"}};
  const auto json = nlohmann::json::parse(inspectionJson(fields));
  EXPECT_EQ(json["sim_data"].dump(), R"({"networkType":"4G"})");
  EXPECT_FALSE(json["settings_data"].contains("installKeyboards"));
  ASSERT_EQ(json["fields"].size(), 4U);
  EXPECT_FALSE(json["fields"][1].contains("value"));
  EXPECT_EQ(json["fields"][2]["value"].dump(), R"(["de"])");
  const std::string table = inspectionTable(fields);
  EXPECT_THAT(table, HasSubstr("\n  isVoiceCapable"));
  EXPECT_THAT(table, HasSubstr("absent"));
  EXPECT_THAT(table, HasSubstr("not read"));
  EXPECT_THAT(table, HasSubstr(std::string(38, 'x') + "... "));
}

TEST(ServerUrlTest, OnlyABaseUrlIsTaken) {
  for (const char* url : {"http://h", "https://h.example:8443/base/", "http://[::1]:65535/"}) {
    EXPECT_EQ(faultOfServerUrl(url), "") << url;
  }
  for (const char* url :
       {"", "http:/h", "https:///path", "http://h:0/", "http://h:65536/", "http://h:8x/",
        "http://u@h/", "http://[::1/", "http://h/?a", "http://h\n/", "http://h\xc3\xa4/"}) {
    EXPECT_NE(faultOfServerUrl(url), "") << url;
  }
  EXPECT_EQ(withLastSlash("http://h/base"), "http://h/base/");
  EXPECT_EQ(withLastSlash("http://h/"), "http://h/");
}

TEST(FaultOfVerdictTest, NoVerdictIsAFaultUnlessItIsExpected) {
  const Risk none{};
  Risk high;
  high.riskLevel = RiskLevel::high;
  EXPECT_EQ(faultOfVerdict(std::nullopt, high), std::nullopt);
  EXPECT_EQ(faultOfVerdict(std::nullopt, none), "no verdict came");
  EXPECT_EQ(faultOfVerdict(RiskLevel::undefined, none), std::nullopt);
  EXPECT_EQ(faultOfVerdict(RiskLevel::high, high), std::nullopt);
  EXPECT_EQ(faultOfVerdict(RiskLevel::low, high), "expected LOW, got HIGH");
}

TEST(TallyTest, OnlyTheCallsOfThisRunAreCounted) {
  const Tally calls = since({{{"/a", 2}, {"/b", 1}}, 3}, {{{"/a", 5}, {"/b", 1}, {"/c", 1}}, 4});
  EXPECT_EQ(calls.calls, (std::map<std::string, std::int64_t>{{"/a", 3}, {"/c", 1}}));
  EXPECT_EQ(calls.refused, 1);
  EXPECT_EQ(missingCalls({{"/a", 3}, {"/c", 1}}, calls), 0);
  // The refused call may be one of those that are missing, more calls of one path are not.
  EXPECT_EQ(missingCalls({{"/a", 1}, {"/c", 3}}, calls), 1);
}

TEST(ServerProcessTest, TheUrlIsReadAndTheProgramEnds) {
  const std::string script = "echo risk server ready at http://127.0.0.1:7; exec cat /dev/zero";
  const ServerProcess server("/bin/sh", {"-c", script});
  EXPECT_EQ(server.url(), "http://127.0.0.1:7/");
}

TEST(ServerProcessTest, AProgramThatIsNoServerIsTold) {
  const std::pair<const char*, const char*> cases[] = {
      {"exit 7", "exit status 7"},
      {"kill -9 $$", "signal 9"},
      {"echo something else; exec sleep 60", "it said \"something else\""},
      {"echo risk server ready at nowhere; exec sleep 60", "cannot be used"},
      {"exec cat /dev/zero", "no end"},
  };
  for (const auto& [script, part] : cases) {
    EXPECT_THAT(([&, script = script] {
                  const ServerProcess server("/bin/sh", {"-c", script});
                }),
                testing::ThrowsMessage<RunError>(HasSubstr(part)));
  }
}

}  // namespace
}  // namespace demo_host
