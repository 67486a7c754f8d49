#include "apps/risk_server/masking/masker.h"

#include <gtest/gtest.h>

#include "apps/risk_server/contract/call_check.h"
#include "apps/risk_server/embedded_files.h"
#include "apps/risk_server/exchanges/exchange_facts.h"
#include "apps/risk_server/sample_bodies.h"

namespace risk_server {
namespace {

class MaskerTest : public testing::Test {
 protected:
  Json masked(const std::string& body) const { return sample::parsed(masker_.maskedBody(body)); }
  Json masked(const Json& body) const { return masked(body.dump()); }

  const Contract contract_ =
      Contract::fromJson(readServerJson(embeddedContract(), "contract.json"));
  const Masker masker_{contract_, "key"};
};

TEST_F(MaskerTest, nothingPersonalStaysWhereverItStands) {
  const char* const kPersonal[] = {"alice", "Martin",  "example.com", "Harbour",  "aGVsbG8",
                                   "38.72", "1234567", "tok_9",       "7F3A9C52", "Zurich"};
  Exchange exchange;
  exchange.path = "/users/alice?mail=alice@example.com";
  exchange.contentType = "text/alice";
  exchange.fault = "no service at \"/users/alice?mail=alice@example.com\"";
  exchange.reply = R"({"error": "keys.user_id: expected a UUID, got \"alice\"",
      "signedRisk": "alice.Martin.aGVsbG8", "response": {"deviceID": "device-alice"}})";
  exchange.request = R"({"keys": {"user_id": "alice%20Martin", "app_uuid":
      "7F3A9C52-04BE-4D17-9A6E-C0FFEE123456"}, "alice@example.com": {"amount": 1234567},
      "session": {"idSession": "7F3A9C52-04BE-4D17-9A6E-C0FFEE123456-1700000000123"},
      "image": "aGVsbG8gYWxpY2U=", "location": {"latitude": 38.72},
      "tracingData": [{"methodName": "login", "paramList": ["alice Martin",
        "{\"user\":{\"email\":\"alice@example.com\",\"note\":\"[\\\"Harbour\\\"]\"}}",
        "http://alice.example.com/Harbour", "12 Harbour Street"]}],
      "LOGIN": {"user": {"user_address": {"city": "Zurich", "postalCode": "1234567"}},
                "additionalData": {"Zurich": "Harbour", "token": "tok_9"}}})";
  exchange.facts = factsOf(sample::parsed(exchange.request));
  exchange.violations = {
      {{std::string("alice@example.com")}, "not expected here"},
      {{std::string("keys"), std::string("user_id")}, "expected a UUID, got \"alice\""}};
  const std::string line = exchangeToJson(masker_.masked(exchange), {}).dump() +
                           masker_.maskedSummary(exchange, {}).dump();
  for (const char* personal : kPersonal)
    EXPECT_EQ(line.find(personal), std::string::npos) << personal << line;
  EXPECT_NE(line.find("\"methodName\":\"login\""), std::string::npos);
  EXPECT_EQ(masker_.maskedBody("alice wrote {").find("alice"), std::string::npos);
}

TEST_F(MaskerTest, aValueHasOneStandInInEveryForm) {
  const Json body = masked(std::string(R"({"keys": {"user_id": "alice%20b"}, "userId": "alice b",
      "tracingData": [{"paramList": ["alice b", "{\"userId\":\"alice b\"}"]}],
      "session": {"idSession": "7F3A9C52-04BE-4D17-9A6E-C0FFEE123456-17"},
      "uuid": "7F3A9C52-04BE-4D17-9A6E-C0FFEE123456", "amount": 5, "LOGIN": {"amount": 5.0, "more": 6}})"));
  const std::string user = *findText(body, "userId");
  EXPECT_EQ(findText(body, "keys.user_id"), user);
  const Json& params = body["tracingData"][0]["paramList"];
  EXPECT_EQ(params[0], user);
  EXPECT_EQ(params[1], R"({"userId":")" + user + "\"}");
  EXPECT_EQ(findText(body, "session.idSession"), *findText(body, "uuid") + "-17");
  EXPECT_NE(Masker(contract_, "other").maskedBody(R"({"userId":"alice b"})").find("masked-"),
            std::string::npos);
  EXPECT_EQ(Masker(contract_, "other").maskedBody(R"({"userId":"alice b"})").find(user),
            std::string::npos);
}

TEST_F(MaskerTest, whatKeptToTheContractStillDoes) {
  const Json bodies[] = {sample::checkpointBody(sample::transaction(), "a%20b"),
                         sample::checkpointBody(sample::plainCheckpoint("GENERAL"))};
  for (const Json& body : bodies) {
    const CheckedCall checked = checkCall(contract_, "POST", "/qrsk-med/3.0/GetCheckpointRisk/",
                                          {sample::kContentType}, masker_.maskedBody(body.dump()));
    EXPECT_EQ(checked.fault, "");
  }
  // What says nothing about a person is still there.
  const Json kept = masked(sample::checkpointBody(sample::transaction()));
  EXPECT_EQ(findText(kept, "TRANSACTION.curType"), "XAG");
  EXPECT_EQ(findInteger(kept, "session.timeSession"), 1700000000123);
  EXPECT_EQ(findText(kept, "version"), "1.0");
}

}  // namespace
}  // namespace risk_server
