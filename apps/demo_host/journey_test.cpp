#include "apps/demo_host/journey.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "platform/testing/temporary_folder_test_support.h"
#include "quorvance/check_point_type.h"
#include "quorvance/transaction.h"

namespace demo_host {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::StartsWith;

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
      {"{\n  \"title\": oops\n}", "2:12: ", "invalid literal"},
      {"{} {}", "1:4: ", "expected end of input"},
      {"{\"title\": \"\xff\"}", "1:12: ", "UTF-8"},
      {R"({"title": "a", "title": "b", "steps": []})", "an object names \"title\" twice", ""},
      {std::string(100, '['), "nested deeper", "64"},
  });
}

TEST(JourneyTest, AWrongJourneyOrStepIsRefusedWithItsPlace) {
  const std::string step = R"({"title": "t", "steps": [{"wait": 1}], )";
  expectFaults({
      {"{}", "\"title\" is missing", ""},
      {R"({"title": "", "steps": [{"wait": 1}]})", "/title: expected a text, got \"\"", ""},
      {R"({"title": "t", "steps": []})", "/steps: ", "1 to"},
      {step + R"("a/b": 1})", "/a~1b: no such key", "steps"},
      {step + R"("setup": {"user": 7}})", "/setup/user: ", "got 7"},
      {step + R"("setup": {"deviceIdentifier": "yes"}})",
       "/setup/deviceIdentifier: ", "true or false"},
      {step + R"("server": {"rules": "none.json"}})", "/server/rules: ", "none.json"},
      {journeyOf("5"), "/steps/1: ", "checkpoint, crash, logout, permission, screen, user, wait"},
      {journeyOf(R"({"wait": 1, "logout": true})"), "/steps/1/logout: no such key", ""},
      {journeyOf(R"({"wait": 600001})"), "/steps/1/wait: ", "600000"},
      {journeyOf(R"({"wait": 18446744073709551615})"), "/steps/1/wait: ", "18446744073709551615"},
      {journeyOf(R"({"wait": 1.5})"), "/steps/1/wait: expected an integer", "1.5"},
      {journeyOf(R"({"permission": "FLIGHT"})"), "/steps/1/permission: ", "CAMERA"},
  });
}

TEST(JourneyTest, AWrongRecordingIsRefusedWithItsPlace) {
  const auto screen = [](const std::string& recording) {
    return journeyOf(R"({"screen": {"type": "PINCODE", "id": 1, "recording": )" + recording + "}}");
  };
  const auto rows = [&](const std::string& list) {
    return screen(R"({"view": {"frame": [0, 0, 9, 9]}, "rows": )" + list + "}");
  };
  const auto view = [&](const std::string& text) {
    return screen(R"({"rows": [], "view": )" + text + "}");
  };
  const std::string at = "/steps/1/screen";
  expectFaults({
      {journeyOf(R"({"screen": {"type": "PIN", "id": 1, "recording": "a"}})"),
       at + "/type: ", "PINCODE"},
      {journeyOf(R"({"screen": {"type": "PINCODE", "recording": "a"}})"), at + ": \"id\"",
       "missing"},
      {screen("\"none.json\""), at + "/recording: ", "none.json: No such file"},
      {screen(R"({"rows": []})"), at + "/recording: \"view\" is missing", ""},
      {view(R"({"frame": [0, 0, 9]})"), at + "/recording/view/frame: expected 4 columns", "got 3"},
      {view(R"({"frame": [0, 0, 9, 9], "subviews": [{"frame": [0, 0, 1, "w"]}]})"),
       at + "/recording/view/subviews/0/frame/3: expected a number", ""},
      {view(R"({"frame": [0, 0, 9, 9], "subviews": [{"frame": [0, 0, 1, 1], "subviews": []}]})"),
       at + "/recording/view/subviews/0/subviews: no such key", ""},
      {rows(R"([[1, "pressed", 1, 2, 3, 4]])"),
       at + "/recording/rows/0/1: ", "acceleration, began"},
      {rows(R"([[1, "began", 1, 2, 3]])"), at + "/recording/rows/0: expected 6 columns", ""},
      {rows(R"([[1, "gravity", 1, 2, 3, 4]])"), at + "/recording/rows/0: expected 5 columns", ""},
      {rows(R"([[1, "gravity", 1, null, 3]])"), at + "/recording/rows/0/3: ", "got null"},
      {rows(R"([[1.5, "gravity", 1, 2, 3]])"), at + "/recording/rows/0/0: ", "got 1.5"},
      {rows(R"([[600001, "gravity", 1, 2, 3]])"), at + "/recording/rows/0/0: ", "600000"},
      {rows(R"([[9, "gravity", 1, 2, 3], [8, "gravity", 1, 2, 3]])"),
       at + "/recording/rows/1: is earlier", ""},
  });
}

TEST(JourneyTest, AnOptionThatDoesNotFitItsCheckPointIsRefused) {
  const auto with = [](const std::string& type, const std::string& options) {
    return journeyOf(R"({"checkpoint": {"checkpoint_type": ")" + type + "\"}, " + options + "}");
  };
  expectFaults({
      {with("LOGIN", R"("expect": "low")"), "/steps/1/expect: ", "VERY_HIGH, expire, undefined"},
      {with("LOGIN", R"("ask": "report", "expect": "LOW")"), "/steps/1/expect: ", "no verdict"},
      {with("TRANSACTION", R"("transactionID": "t")"), "/steps/1/transactionID: ", "outcome"},
      {with("LOGIN", R"("outcome": "DENIED", "transactionID": "t")"),
       "/steps/1/transactionID: ", "TRANSACTION"},
  });
}

TEST(JourneyTest, ACheckPointThatTheLibraryWouldNotSendAsItStandsIsRefused) {
  const struct {
    const char* checkPoint;
    const char* fault;
  } kCases[] = {
      {"{}", ": \"checkpoint_type\" is missing"},
      {R"({"checkpoint_type": "LAUNCH", "user": {}})", "/user: no such key"},
      {R"({"checkpoint_type": "LOGIN", "user": {"isKYCVerified": "yes"}})",
       "/user/isKYCVerified: \"yes\" is not known here"},
      {R"({"checkpoint_type": "TRANSACTION", "amount": "12"})",
       "/amount: expected a number, got \"12\""},
      {R"({"checkpoint_type": "TRANSACTION", "curType": "eur"})", "/curType: \"eur\""},
      {R"({"checkpoint_type": "TRANSACTION", "actType": "LOAD", "transactionType": "P2P"})",
       "/actType: \"LOAD\""},
      {R"({"checkpoint_type": "TRANSACTION",
           "payment": {"creditCardDetail": {"yearExpiryDate": "2028"}}})",
       "/payment/creditCardDetail/yearExpiryDate: expected a 64-bit integer"},
  };
  for (const auto& [checkPoint, fault] : kCases) {
    EXPECT_THAT(faultOfJourney(checkPointStep(checkPoint)),
                StartsWith(std::string("/steps/1/checkpoint") + fault));
  }
}

TEST(JourneyTest, EveryTypeOfCheckPointIsBuiltAsItsClass) {
  for (const auto& [word, raw] : quorvance::CheckPointTypeEnumerator::dictionary()) {
    const Journey journey = parsed(checkPointStep(
        R"({"checkpoint_type": ")" + word + R"(", "additionalData": {"a": [1, {"b": null}]}})"));
    const auto& step = std::get<VerdictStep>(journey.steps.at(1).action);
    EXPECT_EQ(static_cast<std::int64_t>(step.checkPoint->type()), raw);
    EXPECT_EQ(step.checkPoint->getJson().at("additionalData").dump(), R"({"a":[1,{"b":null}]})");
  }
}

TEST(JourneyTest, AFaultNamesTheFile) {
  const quorvance::TemporaryFolder folder;
  const auto fault = [&](const std::string& name) -> std::string {
    try {
      loadJourney(folder.at(name));
    } catch (const InputError& error) {
      return error.what();
    }
    return "no fault";
  };
  folder.put("a", "{");
  folder.put("b", journeyOf("0"));
  folder.put("rules", "{\"a\":\n!}");
  folder.put("c", R"({"title": "t", "steps": [{"wait": 0}], "server": {"rules": "rules"}})");
  EXPECT_THAT(fault("none"), StartsWith(folder.at("none: No such file")));
  EXPECT_THAT(fault(""), StartsWith(folder.at(": is a folder")));
  EXPECT_THAT(fault("a"), StartsWith(folder.at("a: 1:2: ")));
  EXPECT_THAT(fault("b"), StartsWith(folder.at("b: /steps/1: ")));
  EXPECT_THAT(fault("c"),
              AllOf(StartsWith(folder.at("c: /server/rules: ")), HasSubstr("/rules: 2:1: ")));
}

}  // namespace
}  // namespace demo_host
