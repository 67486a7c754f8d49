#include "apps/risk_server/captures/capture.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "apps/risk_server/captures/capture_check.h"
#include "apps/risk_server/captures/har.h"
#include "apps/risk_server/embedded_files.h"
#include "apps/risk_server/report/report_writer.h"
#include "apps/risk_server/sample_bodies.h"

namespace risk_server {
namespace {

using sample::kEnrichPath;

constexpr const char* kRiskPath = "/qrsk-med/3.0/GetCheckpointRisk/";

const Contract& contract() {
  static const Contract kContract =
      Contract::fromJson(readServerJson(embeddedContract(), "contract.json"));
  return kContract;
}

Exchange callTo(const std::string& path, const std::string& request) {
  Exchange exchange;
  exchange.time = exchange.received = 1'700'000'000'123;
  exchange.method = "POST";
  exchange.path = path;
  exchange.contentType = sample::kContentType;
  exchange.request = request;
  exchange.status = 200;
  exchange.reply = R"({"response":"OK"})";
  return exchange;
}

// Everything that a capture must give back.
std::string tellAll(const Exchange& exchange, const ReplyOutcome& outcome) {
  return dumpServerJson(exchangeSummary(exchange, outcome)) + exchange.request + "|" +
         exchange.reply;
}

std::vector<CapturedExchange> sampleExchanges() {
  std::vector<Exchange> exchanges = {
      callTo(kRiskPath, sample::checkpointBody(sample::transaction()).dump()),
      callTo(kEnrichPath, R"({"keys":1,"keys":2,"big":9007199254740993})"),
      callTo(kEnrichPath, "\xff\xfe"),
      callTo("/qrsk-med/3.0/GetDeviceID/", "{}"),
      callTo(kEnrichPath, sample::commonBody().dump()),
  };
  exchanges[0].risk = 2;
  exchanges[0].rule = 4;
  exchanges[4].status = 503;
  exchanges[4].faultInjected = "slow";
  exchanges[4].reply = "\xff";
  std::vector<CapturedExchange> captured;
  for (Exchange& exchange : exchanges) {
    exchange.id = captured.size() + 1;
    checkExchange(exchange, contract());
    // Neither of these follows from the others.
    exchange.time = exchange.received + 1;
    captured.push_back({exchange, {Delivery::kCut, exchange.time + 2, 1973}, ""});
  }
  return captured;
}

TEST(CaptureTest, givesBackWhatWasExported) {
  std::string lines;
  std::string har(harBegin());
  for (const auto& [exchange, outcome, where] : sampleExchanges()) {
    lines += dumpServerJson(exchangeToJson(exchange, outcome)) + "\n\n";
    har +=
        (exchange.id == 1 ? "" : ",") + dumpServerJson(harEntry(exchange, outcome, "http://h:1/"));
  }
  har += harEnd();
  for (const std::string& text : {lines, har}) {
    const Capture capture = readCapture(text, contract());
    const auto expected = sampleExchanges();
    ASSERT_EQ(capture.exchanges.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
      EXPECT_EQ(tellAll(capture.exchanges[i].exchange, capture.exchanges[i].outcome),
                tellAll(expected[i].exchange, expected[i].outcome));
    }
  }
}

TEST(CaptureTest, readsWhatAProxyWrote) {
  const Capture capture = readCapture(R"({"log": {"entries": [
      {"request": {"method": "GET", "url": "https://cdn.example/qrsk.js", "headers": []}, "response": {}},
      {"startedDateTime": "2023-11-14T23:13:20.123+01:00", "time": 12.5,
       "request": {"method": "POST", "url": "https://bank.example/base/qrsk-med/3.0//GetDeviceID/",
         "headers": [{"name": "content-type", "value": "application/json; charset=utf-8"}],
         "postData": {"mimeType": "x", "text": "{\"a\":1}"}},
       "response": {"status": 200, "content": {"text": "eyJiIjoyfQ==", "encoding": "base64"}}},
      {"request": {"method": "POST", "url": "https://bank.example/base/qrsk-med/3.0/GetDeviceID/",
         "headers": [], "postData": {"text": "{}"}}, "response": {"status": 404}},
      {"request": {"method": "POST", "url": "https://bank.example/qrsk-med/3.0//GetDeviceID/?a=/b/",
         "headers": [], "postData": {"text": "{}"}}, "response": {"status": 404}}]}})",
                                      contract());
  EXPECT_EQ(capture.skipped, 1U);
  ASSERT_EQ(capture.exchanges.size(), 3U);
  const Exchange& first = capture.exchanges[0].exchange;
  EXPECT_EQ(first.path, "/qrsk-med/3.0//GetDeviceID/");
  EXPECT_EQ(first.time, 1'700'000'000'123);
  EXPECT_EQ(capture.exchanges[0].outcome.took, 12'500);
  EXPECT_EQ(first.reply, R"({"b":2})");
  EXPECT_EQ(first.violations.front().text(), "keys: missing");
  EXPECT_NE(capture.exchanges[1].exchange.fault.find("slash for slash"), std::string::npos);
  EXPECT_EQ(capture.exchanges[1].where, "entry 3");
  EXPECT_EQ(capture.exchanges[2].exchange.path, "/qrsk-med/3.0//GetDeviceID/?a=/b/");
  EXPECT_FALSE(capture.exchanges[2].exchange.fault.empty());
}

TEST(CaptureTest, namesTheLineThatIsNone) {
  const std::pair<const char*, const char*> kCases[] = {
      {"{\"path\": \"/\"}\n\n{", "line 3: no JSON: parse error"},
      {"{\"path\": 5}", "line 1: path: expected a text, got 5"},
      {"{}", "line 1: path: missing"},
      {"[]", "line 1: expected an object"},
      {"{\"path\": \"/\", \"requestBytes\": \"?\"}", "line 1: requestBytes: expected base64url"},
      {"{\"log\": {}}", "log.entries: expected an array"},
      {"{\"log\": {\"entries\": [{}]}}", "entry 1: request.url: missing"},
  };
  for (const auto& [text, fault] : kCases) {
    try {
      readCapture(text, contract());
      ADD_FAILURE() << text;
    } catch (const InputError& error) {
      EXPECT_EQ(std::string(error.what()).find(fault), 0U) << error.what();
    }
  }
}

TEST(CaptureTest, theCheckTellsEachViolationAndEndsWithOne) {
  std::string pattern = (std::filesystem::temp_directory_path() / "capture_XXXXXX").string();
  const std::filesystem::path folder = mkdtemp(pattern.data());
  const std::string file = folder / "log.jsonl";
  const auto check = [&](std::vector<Exchange> exchanges) {
    std::ofstream stream(file);
    for (const Exchange& exchange : exchanges)
      stream << dumpServerJson(exchangeToJson(exchange)) << '\n';
    stream.close();
    std::ostringstream out;
    const int status = checkCapture(file, contract(), out);
    return std::to_string(status) + " " + out.str();
  };
  const Exchange right = callTo(kEnrichPath, sample::commonBody().dump());
  EXPECT_EQ(check({right, {}}), "0 2 calls, 0 violations\n");
  EXPECT_EQ(check({}), "1 0 calls, 0 violations\n") << "a check of nothing has found nothing";
  Json wrong = sample::commonBody();
  wrong["keys"].erase("device_id");
  wrong["version"] = 1;
  EXPECT_EQ(check({right, callTo(kEnrichPath, wrong.dump())}),
            "1 " + file + ":line 2: " + kEnrichPath + ": keys.device_id: missing\n" + file +
                ":line 2: " + kEnrichPath + ": version: expected a text, got 1\n" +
                "2 calls, 2 violations\n");
  std::filesystem::remove_all(folder);
}

TEST(ReportTest, holdsTheNewestAndNothingThatEndsItsScript) {
  Capture capture;
  constexpr std::size_t kBound = 30'000;
  const std::string third(kBound / 3, 'x');
  for (const char* mark : {"<oldest>", "</script><b>", "<!--"}) {
    capture.exchanges.push_back({callTo(kEnrichPath, mark + third), {}, ""});
  }
  const std::string report = reportOf(capture, "calls.jsonl", nullptr, kBound);
  EXPECT_EQ(report.find("</script><b>"), std::string::npos);
  EXPECT_NE(report.find("\\u003c/script>\\u003cb>"), std::string::npos);
  EXPECT_EQ(report.find("oldest>"), std::string::npos);
  EXPECT_NE(report.find("The oldest 1 of 3 exchanges were left out"), std::string::npos);
  EXPECT_NE(report.find("connect-src 'none'"), std::string::npos);
  const Masker masker(contract(), "key");
  EXPECT_EQ(reportOf(capture, "calls.jsonl", &masker, kBound).find("xxxxxxxxxx"),
            std::string::npos);
}

}  // namespace
}  // namespace risk_server
