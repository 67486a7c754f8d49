#include "apps/demo_host/journey.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <fstream>
#include <string>

#include "quorvance/account_check_points.h"
#include "quorvance/check_point_type.h"
#include "quorvance/transaction.h"

namespace demo_host {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class JourneyFolder {
 public:
  JourneyFolder() {
    std::string name = std::filesystem::temp_directory_path() / "journey-test-XXXXXX";
    folder_ = mkdtemp(name.data());
  }
  ~JourneyFolder() { std::filesystem::remove_all(folder_); }
  JourneyFolder(const JourneyFolder&) = delete;
  JourneyFolder& operator=(const JourneyFolder&) = delete;

  std::filesystem::path write(const std::string& name, const std::string& text) const {
    std::ofstream(folder_ / name) << text;
    return folder_ / name;
  }
  const std::filesystem::path& path() const { return folder_; }

 private:
  std::filesystem::path folder_;
};

std::string journeyOf(const std::string& step) {
  return R"({"title": "t", "steps": [{"wait": 0}, )" + step + "]}";
}

std::string checkPointStep(const std::string& checkPoint) {
  return journeyOf(R"({"checkpoint": )" + checkPoint + "}");
}

Journey parsed(const std::string& text) { return parseJourney(parseStrictJson(text), "."); }

std::string faultOfJourney(const std::string& text) {
  try {
    parsed(text);
  } catch (const InputError& error) {
    return error.what();
  }
  return "no fault";
}

struct BadJourney {
  std::string text;
  std::string start;  // the place, and what follows at once
  std::string part;
};

void expectFaults(const std::vector<BadJourney>& journeys) {
  for (const BadJourney& bad : journeys) {
    EXPECT_THAT(faultOfJourney(bad.text), AllOf(StartsWith(bad.start), HasSubstr(bad.part)))
        << bad.text;
  }
}

TEST(JourneyTest, WhatIsNoJsonIsRefusedWithItsLineAndColumn) {
  expectFaults({
      {"", "1:1: ", "unexpected end"},
      {"{\n  \"title\": oops\n}", "2:12: ", "invalid literal"},
      {"{\"title\": \"t\"\n", "2:1: ", "unexpected end"},
      {"{} {}", "1:4: ", "expected end of input"},
      {"{\"title\": \"\xff\"}", "1:12: ", "UTF-8"},
      {R"({"title": "a", "title": "b", "steps": []})", "an object names \"title\" twice", ""},
      {std::string(100, '['), "nested deeper", "64"},
  });
}

TEST(JourneyTest, AWrongJourneyIsRefusedWithItsPlace) {
  expectFaults({
      {"[]", "expected an object, got an array", ""},
      {"{}", "\"title\" is missing", ""},
      {R"({"title": "", "steps": [{"wait": 1}]})", "/title: expected a text, got \"\"", ""},
      {R"({"title": "t"})", "\"steps\" is missing", ""},
      {R"({"title": "t", "steps": []})", "/steps: ", "1 to"},
      {R"({"title": "t", "steps": {}})", "/steps: ", "array"},
      {R"({"title": "t", "steps": [{"wait": 1}], "stops": 1})", "/stops: no such key", "steps"},
      {R"({"title": "t", "steps": [{"wait": 1}], "a/b": 1})", "/a~1b: no such key", ""},
      {R"({"title": "t", "steps": [{"wait": 1}], "setup": {"user": 7}})", "/setup/user: ", "got 7"},
      {R"({"title": "t", "steps": [{"wait": 1}], "setup": {"deviceIdentifier": "yes"}})",
       "/setup/deviceIdentifier: ", "true or false"},
      {R"({"title": "t", "steps": [{"wait": 1}], "setup": {"users": "a"}})",
       "/setup/users: ", "user"},
      {R"({"title": "t", "steps": [{"wait": 1}], "server": {"rules": "none.json"}})",
       "/server/rules: ", "none.json"},
  });
}

TEST(JourneyTest, AWrongStepIsRefusedWithItsPlace) {
  expectFaults({
      {journeyOf("5"), "/steps/1: ", "checkpoint, crash, logout, permission, user, wait"},
      {journeyOf(R"({"note": "nothing"})"), "/steps/1: ", "with one of"},
      {journeyOf(R"({"wait": 1, "logout": true})"), "/steps/1/logout: no such key", ""},
      {journeyOf(R"({"wait": -1})"), "/steps/1/wait: ", "from 0"},
      {journeyOf(R"({"wait": 600001})"), "/steps/1/wait: ", "600000"},
      {journeyOf(R"({"wait": 18446744073709551615})"), "/steps/1/wait: ", "18446744073709551615"},
      {journeyOf(R"({"wait": 1.5})"), "/steps/1/wait: expected an integer", "1.5"},
      {journeyOf(R"({"logout": false})"), "/steps/1/logout: ", "true"},
      {journeyOf(R"({"user": null})"), "/steps/1/user: ", "null"},
      {journeyOf(R"({"permission": "FLIGHT"})"), "/steps/1/permission: ", "CAMERA"},
      {journeyOf(R"({"wait": 1, "note": ")" + std::string(81, 'n') + "\"}"),
       "/steps/1/note: ", "80 bytes"},
  });
}

TEST(JourneyTest, AnOptionThatDoesNotFitItsCheckPointIsRefused) {
  const auto with = [](const std::string& type, const std::string& options) {
    return journeyOf(R"({"checkpoint": {"checkpoint_type": ")" + type + "\"}, " + options + "}");
  };
  expectFaults({
      {with("LOGIN", R"("ask": "maybe")"), "/steps/1/ask: ", "report, verdict"},
      {with("LOGIN", R"("expect": "low")"), "/steps/1/expect: ", "VERY_HIGH, expire, undefined"},
      {with("LOGIN", R"("outcome": "REFUSED")"), "/steps/1/outcome: ", "APPROVED, CANCELLED"},
      {with("LOGIN", R"("ask": "report", "expect": "LOW")"), "/steps/1/expect: ", "no verdict"},
      {with("LOGIN", R"("ask": "report", "outcome": "DENIED")"), "/steps/1/outcome: ", "report"},
      {with("TRANSACTION", R"("transactionID": "t")"), "/steps/1/transactionID: ", "outcome"},
      {with("LOGIN", R"("outcome": "DENIED", "transactionID": "t")"),
       "/steps/1/transactionID: ", "TRANSACTION"},
  });
}

TEST(JourneyTest, ACheckPointThatTheLibraryWouldNotSendAsItStandsIsRefused) {
  const std::string at = "/steps/1/checkpoint";
  expectFaults({
      {checkPointStep("[]"), at + ": expected an object", ""},
      {checkPointStep("{}"), at + ": \"checkpoint_type\" is missing", ""},
      {checkPointStep(R"({"checkpoint_type": 3})"), at + "/checkpoint_type: ", "TRANSACTION"},
      {checkPointStep(R"({"checkpoint_type": "login"})"), at + "/checkpoint_type: ", "LOGIN"},
      {checkPointStep(R"({"checkpoint_type": "LAUNCH", "user": {}})"), at + "/user: no such key",
       ""},
      {checkPointStep(R"({"checkpoint_type": "GENERAL", "additionalData": 5})"),
       at + "/additionalData: expected an object, got 5", ""},
      {checkPointStep(R"({"checkpoint_type": "UPDATE_DETAILS", "details": {}})"),
       at + "/details: no such key", ""},
      {checkPointStep(R"({"checkpoint_type": "PASSWORD_CHANGE", "user": {"name": "a"}})"),
       at + "/user/name: no such key", ""},
      {checkPointStep(R"({"checkpoint_type": "LOGIN", "user": {"email": null}})"),
       at + "/user/email: expected a text, got null", ""},
      {checkPointStep(R"({"checkpoint_type": "LOGIN", "user": {"isKYCVerified": "yes"}})"),
       at + "/user/isKYCVerified: \"yes\" is not known here", "UNKNOWN"},
      {checkPointStep(R"({"checkpoint_type": "TRANSACTION", "amount": "12"})"),
       at + "/amount: expected a number, got \"12\"", ""},
      {checkPointStep(R"({"checkpoint_type": "TRANSACTION", "timeStamp": 1.5})"),
       at + "/timeStamp: expected a 64-bit integer, got 1.5", ""},
      {checkPointStep(R"({"checkpoint_type": "TRANSACTION", "curType": "eur"})"),
       at + "/curType: \"eur\"", "USD"},
      {checkPointStep(R"({"checkpoint_type": "TRANSACTION", "actType": "GIFT"})"),
       at + "/actType: \"GIFT\"", "P2P"},
      {checkPointStep(R"({"checkpoint_type": "TRANSACTION", "actType": 4})"),
       at + "/actType: expected a text, got 4", ""},
      {checkPointStep(
           R"({"checkpoint_type": "TRANSACTION", "actType": "LOAD", "transactionType": "P2P"})"),
       at + "/actType: \"LOAD\"", "P2P"},
      {checkPointStep(R"({"checkpoint_type": "TRANSACTION", "payment": {"creditCardDetail": {
           "yearExpiryDate": "2028"}}})"),
       at + "/payment/creditCardDetail/yearExpiryDate: expected a 64-bit integer", ""},
  });
}

TEST(JourneyTest, EveryTypeOfCheckPointIsBuiltAsItsClass) {
  for (const auto& [word, raw] : quorvance::CheckPointTypeEnumerator::dictionary()) {
    const Journey journey = parsed(checkPointStep(
        R"({"checkpoint_type": ")" + word + R"(", "additionalData": {"a": [1, {"b": null}]}})"));
    const auto& step = std::get<VerdictStep>(journey.steps.at(1).action);
    EXPECT_EQ(static_cast<std::int64_t>(step.checkPoint->type()), raw);
    EXPECT_EQ(step.checkPoint->getJson().at("additionalData").dump(), R"({"a":[1,{"b":null}]})");
  }
  const Journey journey =
      parsed(checkPointStep(R"({"checkpoint_type": "PASSWORD_CHANGE", "user": {"user_id": "u"}})"));
  const auto& step = std::get<VerdictStep>(journey.steps.at(1).action);
  const auto* change = dynamic_cast<const quorvance::PasswordChange*>(step.checkPoint.get());
  ASSERT_NE(change, nullptr);
  EXPECT_EQ(change->user()->userId, "u");
}

TEST(JourneyTest, AWholeJourneyIsRead) {
  const JourneyFolder folder;
  folder.write("rules.json", "[]");
  const auto file = folder.write("journey.json", R"({
    "title": "all", "server": {"rules": "rules.json", "faults": "rules.json"},
    "setup": {"user": "u", "applicationIdentifier": "org.a", "applicationVersion": "1",
              "deviceIdentifier": false},
    "steps": [
      {"checkpoint": {"checkpoint_type": "TRANSACTION", "amount": 12, "actType": "LOAD"},
       "expect": "HIGH", "outcome": "DENIED", "transactionID": "x"},
      {"checkpoint": {"checkpoint_type": "GENERAL"}, "ask": "report", "note": "n"},
      {"wait": 7}, {"logout": true}, {"user": "v"}, {"permission": "PHOTO"}]})");
  const Journey journey = loadJourney(file);
  EXPECT_EQ(journey.server.rules, folder.path() / "rules.json");
  EXPECT_EQ(journey.server.faults, folder.path() / "rules.json");
  EXPECT_EQ(journey.setup.application.identifier, "org.a");
  EXPECT_FALSE(journey.setup.wantsDeviceIdentifier);
  const auto& verdict = std::get<VerdictStep>(journey.steps.at(0).action);
  EXPECT_EQ(verdict.expected, quorvance::RiskLevel::high);
  EXPECT_EQ(verdict.outcome->status, quorvance::CheckPointStatus::DENIED);
  EXPECT_EQ(verdict.outcome->transactionId, "x");
  const auto* transaction = dynamic_cast<const quorvance::Transaction*>(verdict.checkPoint.get());
  ASSERT_NE(transaction, nullptr);
  EXPECT_EQ(transaction->fields().actType, quorvance::TransactionType::LOAD);
  EXPECT_TRUE(std::holds_alternative<ReportStep>(journey.steps.at(1).action));
  EXPECT_EQ(std::get<WaitStep>(journey.steps.at(2).action).time.count(), 7);
  EXPECT_EQ(std::get<UserStep>(journey.steps.at(4).action).userId, "v");
  EXPECT_EQ(std::get<PermissionStep>(journey.steps.at(5).action).permission,
            quorvance::MobilePermission::PHOTO);
}

TEST(JourneyTest, AFaultNamesTheFile) {
  const JourneyFolder folder;
  const auto fault = [](const std::filesystem::path& file) -> std::string {
    try {
      loadJourney(file);
    } catch (const InputError& error) {
      return error.what();
    }
    return "no fault";
  };
  const std::string path = folder.path().string();
  EXPECT_THAT(fault(folder.path() / "none"), StartsWith(path + "/none: No such file"));
  EXPECT_EQ(fault(folder.path()), path + ": is a folder");
  EXPECT_THAT(fault(folder.write("a", "{")), StartsWith(path + "/a: 1:2: "));
  EXPECT_THAT(fault(folder.write("b", journeyOf("0"))), StartsWith(path + "/b: /steps/1: "));
  folder.write("rules", "{\"a\":\n!}");
  EXPECT_THAT(fault(folder.write("c", R"({"title": "t", "steps": [{"wait": 0}],
                                          "server": {"rules": "rules"}})")),
              AllOf(StartsWith(path + "/c: /server/rules: "), HasSubstr("/rules: 2:1: ")));
}

}  // namespace
}  // namespace demo_host
