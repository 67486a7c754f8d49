#include "apps/risk_server/faults/fault_reader.h"

#include <gmock/gmock.h>

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

void expectRefused(const std::vector<std::pair<const char*, const char*>>& cases) {
  for (const auto& [text, fault] : cases) {
    EXPECT_THAT([text = text] { readFaultText(text); }, testing::ThrowsMessage<InputError>(fault));
  }
}

TEST(FaultReaderTest, refusesWrongValuesNamingThePlace) {
  expectRefused({
      {R"([{"path": "*", "hang": true}, 7])", "[1]: expected an object, got 7"},
      {R"([{"hang": true}])", "[0].path: missing"},
      {R"([{"path": "*", "times": 1}])", "[0]: says nothing that goes wrong"},
      {R"([{"path": "*", "headers": {}, "latncy": 1}])", "[0].latncy: no known part of a fault"},
      {R"([{"path": "/qrsk-med/3.0/GetDeviceID/", "hang": true}])",
       "[0].path: no service at \"/qrsk-med/3.0/GetDeviceID/\"; the path is "
       "\"/qrsk-med/3.0//GetDeviceID/\", slash for slash"},
      {R"([{"path": "*", "status": 199}])",
       "[0].status: expected a number from 200 to 599, got 199"},
      {R"([{"path": "*", "hang": true, "skip": 3, "first": 3}])",
       "[0].first: all of them are skipped"},
      {R"([{"path": "*", "headers": {"A": "x\r\nB: y"}}])",
       "[0].headers.A: has control characters"},
      {R"([{"path": "*", "headers": {"CONTENT-Length": "1"}}])",
       "[0].headers.CONTENT-Length: cannot be set"},
  });
}

TEST(FaultReaderTest, refusesPartsThatDoNotGoTogether) {
  expectRefused({
      {R"([{"path": "*", "body": "a", "reply": {}}])", "[0].reply: cannot stand beside \"body\""},
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
  });
}

TEST(FaultReaderTest, boundsTheListAndTheBodiesThatItMakes) {
  const std::string one = R"({"path": "*", "hang": true})";
  std::string many = "[" + one;
  for (std::size_t i = 1; i < kMaxFaults; ++i) many += "," + one;
  EXPECT_EQ(readFaultText(many + "]").size(), kMaxFaults);
  EXPECT_THROW(readFaultText(many + "," + one + "]"), InputError);
  const auto bound = std::to_string(kMaxMadeBodyBytes);
  EXPECT_EQ(replyUnder(R"("oversize": )" + bound).body.size(), kMaxMadeBodyBytes);
  EXPECT_THROW(replyUnder(R"("oversize": 1)" + bound), InputError);
  EXPECT_THROW(replyUnder(R"("nested": )" + bound), InputError);
}

}  // namespace
}  // namespace risk_server
