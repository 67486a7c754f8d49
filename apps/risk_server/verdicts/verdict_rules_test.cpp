#include "apps/risk_server/verdicts/verdict_rules.h"

#include <gmock/gmock.h>

#include "apps/risk_server/sample_bodies.h"

namespace risk_server {
namespace {

int riskOf(const VerdictRules& rules, const std::string& checkpoint, const std::string& user) {
  return rules.decide({checkpoint, user, nullptr, 1}).risk;
}

// Whether a rule with this condition holds for the checkpoint.
bool conditionHolds(const std::string& condition, const Json& checkpoint, std::uint64_t call = 1) {
  const VerdictRules rules =
      VerdictRules::fromJson(sample::parsed("[{" + condition + R"(, "risk": "HIGH"}])"));
  return rules.decide({"TRANSACTION", "a", &checkpoint, call}).risk == 2;
}

TEST(VerdictRulesTest, firstRuleWhoseConditionsAllHoldDecides) {
  const VerdictRules rules = VerdictRules::fromJson(sample::parsed(R"([
      {"checkpoint": "LOGIN", "user": "eve", "risk": "HIGH"},
      {"user": "eve", "risk": "expire"},
      {"checkpoint": "LOGIN", "risk": "VERY_HIGH"},
      {"checkpoint": "LOGIN", "risk": "LOW"}])"));
  EXPECT_EQ(riskOf(rules, "LOGIN", "eve"), 2);
  EXPECT_EQ(riskOf(rules, "LAUNCH", "eve"), -2);
  EXPECT_EQ(riskOf(rules, "LAUNCH", "alice"), -1);
  EXPECT_EQ(riskOf(rules, "LOGIN", "alice"), 3);
}

TEST(VerdictRulesTest, asksForAmountCurrencyAndCountryOfTheCheckpoint) {
  const Json paid = sample::parsed(R"({"amount": 100, "curType": "EUR",
      "user": {"user_address": {"country": "PT"}}, "billingAddress": {"country": "DE"},
      "shippingAddress": {"country": "FR"}, "merchant_details": {"merchant_address":
      {"country": "US"}}})");
  const struct {
    const char* condition;
    bool holds;
  } kCases[] = {
      {R"("amountAtLeast": 100)", true},
      {R"("amountAtLeast": 100.01)", false},
      {R"("amountBelow": 100)", false},
      {R"("amountBelow": 100.01)", true},
      {R"("currency": "USD")", false},
      {R"("country": "FR")", true},
      {R"("country": "US")", false},
      {R"("country": "pt")", false},
      {R"("country": "FR", "currency": "USD")", false},
      {R"("amountAtLeast": -1, "amountBelow": 100.5)", true},
  };
  const Json odd = sample::parsed(R"({"amount": "100", "curType": 1, "user": []})");
  for (const auto& asked : kCases) {
    EXPECT_EQ(conditionHolds(asked.condition, paid), asked.holds) << asked.condition;
    EXPECT_FALSE(conditionHolds(asked.condition, odd)) << asked.condition;
  }
  EXPECT_EQ(riskOf(VerdictRules::fromJson(sample::parsed(R"([{"amountBelow": 9, "risk": "LOW"}])")),
                   "LOGIN", "a"),
            -1);
}

TEST(VerdictRulesTest, asksForTheNumberOfTheCall) {
  std::string third;
  std::string everySecond;
  for (std::uint64_t call = 1; call <= 6; ++call) {
    third += conditionHolds(R"("nth": 3)", Json::object(), call) ? 'x' : '.';
    everySecond += conditionHolds(R"("everyNth": 2)", Json::object(), call) ? 'x' : '.';
  }
  EXPECT_EQ(third, "..x...");
  EXPECT_EQ(everySecond, ".x.x.x");
}

TEST(VerdictRulesTest, refusesWrongRulesNamingThePlace) {
  const struct {
    const char* text;
    const char* fault;
  } kCases[] = {
      {R"([{"risk": "LOW"}, 7])", "[1]: expected an object"},
      {R"([{"risk": "low"}])", "[0].risk: \"low\" is no risk level"},
      {R"([{"risk": "LOW", "checkpoint": "PAYMENT"}])",
       "[0].checkpoint: \"PAYMENT\" is no checkpoint type"},
      {R"([{"risk": "LOW", "usr": "a"}])", "[0].usr: no known condition"},
      {R"([{"risk": "LOW", "amountBelow": "9"}])", "[0].amountBelow: expected a number, got \"9\""},
      {R"([{"risk": "LOW", "currency": "eur"}])",
       "[0].currency: \"eur\" is no currency of three capital letters"},
      {R"([{"risk": "LOW", "nth": 0}])", "[0].nth: expected a number from 1, got 0"},
  };
  for (const auto& [text, fault] : kCases) {
    EXPECT_THAT([text = text] { VerdictRules::fromJson(sample::parsed(text)); },
                testing::ThrowsMessage<InputError>(fault));
  }
}

}  // namespace
}  // namespace risk_server
