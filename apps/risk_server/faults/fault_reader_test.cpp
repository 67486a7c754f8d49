#include "apps/risk_server/faults/fault_reader.h"

#include <gtest/gtest.h>

#include "apps/risk_server/embedded_files.h"
#include "apps/risk_server/faults/fault_keys.h"
#include "apps/risk_server/sample_bodies.h"

namespace risk_server {
namespace {

std::vector<Fault> readFaultText(const std::string& json) {
  static const Contract contract =
      Contract::fromJson(readServerJson(embeddedContract(), "contract.json"));
  return readFaults(sample::parsed(json), contract);
}

// What becomes of a normal reply under the fault of these keys.
HttpReply replyUnder(const std::string& keys) {
  HttpReply normal;
  normal.body = R"({"response":"OK"})";
  return replyUnderFault(readFaultText(R"([{"path": "*", )" + keys + "}]").front(), normal);
}

TEST(FaultReaderTest, makesTheRepliesThatAreAskedFor) {
  const struct {
    const char* keys;
    int status;
    std::string body;
  } kCases[] = {
      {R"("latency": 5)", 200, R"({"response":"OK"})"},
      {R"("status": 201)", 201, R"({"response":"OK"})"},
      {R"("status": 204)", 204, ""},
      {R"("status": 502, "body": "<html>")", 502, "<html>"},
      {R"("bodyBytes": "ff FE 00")", 200, std::string("\xff\xfe\0", 3)},
      {R"("emptyBody": true)", 200, ""},
      {R"("reply": {"response": "no", "a": [1]})", 200, R"({"response":"no","a":[1]})"},
      {R"("reply": null)", 200, "null"},
      {R"("nested": 3)", 200, "[[[]]]"},
      {R"("cutBody": 3)", 200, R"({"response":"OK"})"},
  };
  for (const auto& asked : kCases) {
    const HttpReply reply = replyUnder(asked.keys);
    EXPECT_EQ(reply.status, asked.status) << asked.keys;
    EXPECT_EQ(reply.body, asked.body) << asked.keys;
  }
  const HttpReply large = replyUnder(R"("oversize": 1000)");
  EXPECT_EQ(large.body.size(), 1000U);
  EXPECT_EQ(findText(sample::parsed(large.body), "response"), "OK");
  EXPECT_EQ(replyUnder(R"("status": 301, "headers": {"Location": "/x"})").headers,
            (HttpHeaders{{"Location", "/x"}}));
}

TEST(FaultReaderTest, replacesARefusalToo) {
  HttpReply refusal;
  refusal.status = 405;
  refusal.allow = "POST";
  const auto faults = readFaultText(R"([{"path": "*", "reply": {}}])");
  const HttpReply reply = replyUnderFault(faults.front(), refusal);
  EXPECT_EQ(reply.status, 200);
  EXPECT_EQ(reply.allow, "");
}

TEST(FaultReaderTest, namesAFaultByWhatItDoesUnlessItHasAName) {
  EXPECT_EQ(readFaultText(R"([{"latency": 9, "path": "*", "status": 500}])").front().name,
            "latency+status");
  EXPECT_EQ(readFaultText(R"([{"path": "*", "hang": true, "name": "night"}])").front().name,
            "night");
}

struct WrongFault {
  const char* text;
  const char* fault;
};

void expectRefused(const std::vector<WrongFault>& cases) {
  for (const WrongFault& wrong : cases) {
    try {
      readFaultText(wrong.text);
      ADD_FAILURE() << "accepted: " << wrong.text;
    } catch (const InputError& error) {
      EXPECT_STREQ(error.what(), wrong.fault);
    }
  }
}

TEST(FaultReaderTest, refusesWrongValuesNamingThePlace) {
  expectRefused({
      {"{}", "expected an array of faults, got an object"},
      {R"([{"path": "*", "hang": true}, 7])", "[1]: expected an object, got 7"},
      {R"([{"hang": true}])", "[0].path: missing"},
      {R"([{"path": "*", "times": 1}])", "[0]: says nothing that goes wrong"},
      {R"([{"path": "*", "headers": {}, "latncy": 1}])", "[0].latncy: no known part of a fault"},
      {R"([{"path": "/qrsk-med/3.0/GetDeviceID/", "hang": true}])",
       "[0].path: no service at \"/qrsk-med/3.0/GetDeviceID/\"; the path is "
       "\"/qrsk-med/3.0//GetDeviceID/\", slash for slash"},
      {R"([{"path": "*", "hang": false}])", "[0].hang: expected true, got false"},
      {R"([{"path": "*", "status": 199}])",
       "[0].status: expected a number from 200 to 599, got 199"},
      {R"([{"path": "*", "status": "500"}])",
       "[0].status: expected a number from 200 to 599, got \"500\""},
      {R"([{"path": "*", "latency": 600001}])",
       "[0].latency: expected a number from 1 to 600000, got 600001"},
      {R"([{"path": "*", "hang": true, "times": 0}])",
       "[0].times: expected a number from 1, got 0"},
      {R"([{"path": "*", "hang": true, "skip": 3, "first": 3}])",
       "[0].first: all of them are skipped"},
      {R"([{"path": "*", "trickle": 0}])",
       "[0].trickle: expected a number from 1 to 1000000, got 0"},
      {R"([{"path": "*", "bodyBytes": "f"}])",
       "[0].bodyBytes: expected pairs of hexadecimal digits"},
      {R"([{"path": "*", "headers": {"A": "x\r\nB: y"}}])",
       "[0].headers.A: has control characters"},
      {R"([{"path": "*", "headers": {"A b": "x"}}])", "[0].headers.A b: is no name of a header"},
      {R"([{"path": "*", "headers": {"CONTENT-Length": "1"}}])",
       "[0].headers.CONTENT-Length: cannot be set"},
  });
}

TEST(FaultReaderTest, refusesPartsThatDoNotGoTogether) {
  expectRefused({
      {R"([{"path": "*", "body": "a", "reply": {}}])", "[0].reply: cannot stand beside \"body\""},
      {R"([{"path": "*", "hang": true, "cutBody": 1}])",
       "[0].cutBody: cannot stand beside \"hang\""},
      {R"([{"path": "*", "hang": true, "status": 500}])",
       "[0].hang: nothing is sent that could have a status, headers or a body"},
      {R"([{"path": "*", "status": 204, "body": ""}])",
       "[0].body: replies of that status have no body"},
      {R"([{"path": "*", "cutBody": 1, "emptyBody": true}])",
       "[0].cutBody: there is no body to cut"},
      {R"([{"path": "*", "acceptAndClose": true}])",
       "[0].acceptAndClose: needs \"first\" or \"times\", or the control path is closed for good"},
      {R"([{"path": "*", "acceptAndClose": true, "times": 1, "latency": 1}])",
       "[0].acceptAndClose: is the only effect of its fault"},
      {R"([{"path": "/qrsk-med/3.0/ActivityMap/", "acceptAndClose": true, "times": 1}])",
       "[0].acceptAndClose: its path is \"*\""},
  });
}

TEST(FaultReaderTest, boundsTheList) {
  const std::string one = R"({"path": "*", "hang": true})";
  std::string many = "[" + one;
  for (std::size_t i = 1; i < kMaxFaults; ++i) many += "," + one;
  EXPECT_EQ(readFaultText(many + "]").size(), kMaxFaults);
  EXPECT_THROW(readFaultText(many + "," + one + "]"), InputError);
}

TEST(FaultReaderTest, boundsTheBodiesThatItMakes) {
  const auto bound = std::to_string(kMaxMadeBodyBytes);
  EXPECT_EQ(replyUnder(R"("oversize": )" + bound).body.size(), kMaxMadeBodyBytes);
  EXPECT_THROW(replyUnder(R"("oversize": 1)" + bound), InputError);
  EXPECT_THROW(replyUnder(R"("oversize": 10)"), InputError);
  EXPECT_THROW(replyUnder(R"("nested": )" + bound), InputError);
}

}  // namespace
}  // namespace risk_server
