#include "apps/risk_server/contract/contract.h"

#include <gmock/gmock.h>

#include <functional>

#include "apps/risk_server/embedded_files.h"
#include "apps/risk_server/sample_bodies.h"

namespace risk_server {
namespace {

Contract builtInContract() {
  return Contract::fromJson(readServerJson(embeddedContract(), "contract.json"));
}

// "" when the body is right.
std::string faultOfBody(const std::string& path, const Json& body) {
  const Contract contract = builtInContract();
  const ServiceCall* call = contract.find("/qrsk-med/3.0/" + path);
  if (call == nullptr) return "no such call: " + path;
  const auto mismatch = call->body->firstMismatchOf(body);
  return mismatch ? mismatch->text() : "";
}

Json with(Json body, const std::string& text) {
  const Json more = sample::parsed(text);
  for (const auto& [key, value] : more.items()) body[key] = value;
  return body;
}

// What no journey of the demo sends; the library's own tests send the rest.
TEST(ContractTest, acceptsWhatAWellBehavedClientSends) {
  const Json common = sample::commonBody();
  const struct {
    const char* path;
    Json body;
  } kCases[] = {
      {"sendScreenListenerEvent/", with(common, R"({"screenListenerEvent": {"timestamp": 5,
          "screenListenerType": "PINCODE", "screenId": 7, "action": "END"}})")},
      {"BiometricData/", with(common, R"({"userId": "u", "bio_sensor_event_data": {
          "fraudster": false, "actionType": "GENERAL", "eventList": [[1.5, 2, 3, 0, -1.0]],
          "eventListTS": [[1, 2]], "sensorsTS": [[5], [6]],
          "sensorsData": [[1, 2, 3, 4, 5, 6, 7, 8, 9], [1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12]],
          "eventListHeader": ["x", "y", "size", "pressure", "id"],
          "eventListTSHeader": ["x", "y", "size", "pressure", "id"],
          "sensorHeader": ["lin_acc_x", "lin_acc_y", "lin_acc_z", "gyr_unc_x", "gyr_unc_y",
                           "gyr_unc_z", "gra_x", "gra_y", "gra_z"],
          "sensorTSHeader": ["nanoTimeSensor"]}})")},
      {"SendBiometricImage/", sample::parsed(R"({"version": "", "image": "aGk="})")},
      {"CrashLogging/", with(common, R"({"cause": "Signal SIGSEGV(11) was raised.\n"})")},
      {"ActivityMap/", with(common, R"({"screenType": "startApp", "timestampStart": 1})")},
      {"ThirdPartyCacheEnrichment/", common},
      {"GetCheckpointRisk/", sample::checkpointBody(sample::plainCheckpoint("NONE"))},
  };
  for (const auto& sent : kCases) EXPECT_EQ(faultOfBody(sent.path, sent.body), "") << sent.path;
}

TEST(ContractTest, acceptsEveryCheckpointTypeMadeOfItsWordAlone) {
  for (const char* word : {"REGISTER", "LOGIN", "TRANSACTION", "ADD_PAYMENT_METHOD",
                           "UPDATE_USER_INFO", "PASSWORD_CHANGE"}) {
    const Json bare = with(sample::plainCheckpoint(word), R"({"additionalData": {}})");
    EXPECT_EQ(faultOfBody("SendCheckpointEvent/", sample::checkpointBody(bare)), "");
    EXPECT_EQ(
        faultOfBody("GetCheckpointRisk/", sample::checkpointBody(with(bare, R"({"more": 1})"))),
        std::string(word) + ".user: missing");
  }
}

TEST(ContractTest, namesThePlaceOfAFault) {
  using Change = std::function<void(Json&)>;
  const struct {
    Change change;
    const char* fault;
  } kCases[] = {
      {[](Json& b) { b["keys"].erase("checkpoint"); }, "keys.checkpoint: missing"},
      {[](Json& b) { b["keys"]["requestID"] = std::string(sample::kUuid) + "\n"; },
       "keys.requestID: expected an upper-case UUID, got \"7F3A9C52-04BE-4D17-9A6E-C0FFEE123456\\n"
       "\""},
      {[](Json& b) { b["keys"]["user_id"] = "a b"; },
       "keys.user_id: expected percent-encoded text of the characters that a URL query allows, got "
       "\"a b\""},
      {[](Json& b) { b["session"]["timeSession"] = 9223372036854775808ULL; },
       "session.timeSession: expected an integer, got 9223372036854775808"},
      {[](Json& b) { b.erase("TRANSACTION"); }, "TRANSACTION: missing"},
      {[](Json& b) { b["TRANSACTION"]["checkpoint_type"] = "LOGIN"; },
       "TRANSACTION.checkpoint_type: expected \"TRANSACTION\", got \"LOGIN\""},
      {[](Json& b) { b["TRANSACTION"]["amount"] = "12"; },
       "TRANSACTION.amount: expected a number, got \"12\""},
      {[](Json& b) { b["TRANSACTION"]["user"].erase("isKYCVerified"); },
       "TRANSACTION.user.isKYCVerified: missing"},
      {[](Json& b) { b["checkpoint_additional_data"]["permissions"] = sample::parsed("[1]"); },
       "checkpoint_additional_data.permissions[0]: expected one of \"READ_CONTACTS\", "
       "\"AUTHORIZED_ALWAYS\", \"AUTHORIZED_WHEN_IN_USE\", \"CAMERA\", \"REMINDER\", \"CALENDAR\", "
       "\"PHOTO\", got 1"},
  };
  for (const auto& wrong : kCases) {
    Json body = sample::checkpointBody(sample::transaction());
    wrong.change(body);
    EXPECT_EQ(faultOfBody("GetCheckpointRisk/", body), wrong.fault);
  }
}

TEST(ContractTest, tellsEveryFaultWithItsPlace) {
  const Contract contract = builtInContract();
  const ServiceCall* call = contract.find("/qrsk-med/3.0/GetCheckpointRisk/");
  Json body = sample::checkpointBody(sample::transaction());
  body["keys"].erase("requestID");
  body["version"] = 7;
  body["TRANSACTION"]["amount"] = "12";
  body["checkpoint_additional_data"]["permissions"] = sample::parsed(R"(["CAMERA", 1, 2])");
  body["a.b"] = 1;
  std::string places;
  for (const Mismatch& mismatch : call->body->mismatchesOf(body)) {
    places += placeToJson(mismatch.place).dump() + "\n";
  }
  EXPECT_EQ(places,
            "[\"keys\",\"requestID\"]\n[\"version\"]\n"
            "[\"checkpoint_additional_data\",\"permissions\",1]\n"
            "[\"checkpoint_additional_data\",\"permissions\",2]\n"
            "[\"TRANSACTION\",\"amount\"]\n[\"a.b\"]\n");
  for (int i = 0; i < 300; ++i) body["checkpoint_additional_data"]["permissions"].push_back(i);
  EXPECT_EQ(call->body->mismatchesOf(body).size(), kMaxMismatches);
}

TEST(ContractTest, refusesWhatOnlyOtherCallsCarry) {
  Json withCheckpoint = sample::commonBody();
  withCheckpoint["keys"]["checkpoint"] = "LOGIN";
  EXPECT_EQ(faultOfBody("ThirdPartyCacheEnrichment/", withCheckpoint),
            "keys.checkpoint: not expected here");
  Json details = sample::checkpointBody(sample::plainCheckpoint("UPDATE_DETAILS"));
  details["checkpoint_additional_data"] = sample::permissions();
  EXPECT_EQ(faultOfBody("SendCheckpointEvent/", details),
            "checkpoint_additional_data: not expected here");
  Json update = with(sample::commonBody(), R"({"transactionUpdate": {"status": "APPROVED",
      "requestID": "00000000-0000-0000-0000-000000000000"}})");
  EXPECT_NE(faultOfBody("/UpdateTransactionResult/", update).find("keys.requestID"),
            std::string::npos);
  EXPECT_EQ(faultOfBody("TracingData/", with(sample::commonBody(), R"({"tracingData": [{}, {
      "date": "2023-11-14 22:13:20", "paramList": []}]})")),
            "tracingData[1].date: expected a UTC date with milliseconds, got \"2023-11-14 "
            "22:13:20\"");
}

TEST(ContractTest, namesTheRowOfABiometricBodyThatIsWrong) {
  const struct {
    const char* change;
    const char* fault;
  } kCases[] = {
      {R"({"sensorsTS": [[1], [2]]})", ""},
      {R"({"eventList": [[1, 2, 3, 4, 0]]})", ""},
      {R"({"eventList": [[1, 2, 3, 4]]})", "eventList[0]: expected 5 columns, got an array of 4"},
      {R"({"eventList": [[1, 2, 3, 4, 0.5]]})",
       "eventList[0][4]: expected one of 1, 0, -1, got 0.5"},
      {R"({"eventList": [[1, null, 3, 4, 0]]})", "eventList[0][1]: expected a number, got null"},
      {R"({"eventListTS": [[1, 2], [3, 4, 5]]})",
       "eventListTS[1]: expected 2 columns, got an array of 3"},
      {R"({"eventListTS": [[1, 2.5]]})", "eventListTS[0][1]: expected an integer, got 2.5"},
      {R"({"eventListTS": [[1, 2]]})",
       "eventListTS: expected no more members than eventList (0), got 1"},
      {R"({"sensorsTS": [[1]]})", "sensorsTS: expected as many members as sensorsData (2), got 1"},
      {R"({"sensorsTS": [[1], ["2"]]})", "sensorsTS[1][0]: expected an integer, got \"2\""},
      {R"({"sensorsData": [[1, 2, 3, 4, 5, 6, 7, 8, 9, 10]]})",
       "sensorsData[0]: expected 9 or 12 columns, got an array of 10"},
      {R"({"sensorTSHeader": ["sensorTime"]})",
       "sensorTSHeader: expected [\"nanoTimeSensor\"], got an array of 1"},
      {R"({"eventListTSHeader": ["timeEvent", "view_id"]})",
       "eventListTSHeader: expected [\"x\",\"y\",\"size\",\"pressure\",\"id\"], got an array of 2"},
  };
  for (const auto& one : kCases) {
    const Json events = with(sample::parsed(R"({"actionType": "PINCODE", "eventList": [],
        "eventListTS": [], "sensorsTS": [[1], [2]],
        "eventListHeader": ["x", "y", "size", "pressure", "id"],
        "eventListTSHeader": ["x", "y", "size", "pressure", "id"],
        "sensorsData": [[1, 2, 3, 4, 5, 6, 7, 8, 9], [1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12]],
        "sensorHeader": ["lin_acc_x", "lin_acc_y", "lin_acc_z", "gyr_unc_x", "gyr_unc_y",
                         "gyr_unc_z", "gra_x", "gra_y", "gra_z"],
        "sensorTSHeader": ["nanoTimeSensor"]})"),
                             one.change);
    Json body = sample::commonBody();
    body["bio_sensor_event_data"] = events;
    const std::string place = *one.fault == '\0' ? "" : "bio_sensor_event_data.";
    EXPECT_EQ(faultOfBody("BiometricData/", body), place + one.fault);
  }
}

TEST(ContractTest, findsCallsByTheExactBytesOfTheTarget) {
  const Contract contract = builtInContract();
  EXPECT_EQ(contract.calls().size(), 14U);
  EXPECT_EQ(contract.find("/qrsk-med/3.0/GetDeviceID/"), nullptr);
  EXPECT_EQ(contract.find("/qrsk-med/3.0//GetDeviceID"), nullptr);
  EXPECT_EQ(contract.find("/qrsk-med/3.0//Get%44eviceID/"), nullptr);
  EXPECT_NE(contract.find("/qrsk-med/3.0//GetDeviceID/"), nullptr);
  EXPECT_EQ(contract.reasonForUnknown("/qrsk-med/3.0/GetDeviceID/"),
            "no service at \"/qrsk-med/3.0/GetDeviceID/\"; the path is "
            "\"/qrsk-med/3.0//GetDeviceID/\", slash for slash");
}

TEST(ContractTest, wantsOneContentTypeOfExactlyThatSpelling) {
  const Contract contract = builtInContract();
  EXPECT_FALSE(contract.contentTypeFault({sample::kContentType}));
  EXPECT_TRUE(contract.contentTypeFault({}));
  EXPECT_TRUE(contract.contentTypeFault({"application/json;charset=utf-8"}));
  EXPECT_TRUE(contract.contentTypeFault({sample::kContentType, sample::kContentType}));
}

TEST(ContractTest, refusesAFileThatIsWrongNamingThePlace) {
  const struct {
    const char* text;
    const char* fault;
  } kCases[] = {
      {"[]", "expected an object, got an array of 0"},
      {R"({"calls": {}})", "contentType: missing"},
      {R"({"contentType": "t", "calls": {"/a": {"reply": "accepted", "body": "other"}}})",
       "calls./a.body: no definition is called \"other\""},
      {R"({"contentType": "t", "definitions": {"a": {"items": "b"}, "b": {"items": "a"}},
           "calls": {}})",
       "definitions.b.items: the definition \"a\" contains itself"},
      {R"({"contentType": "t", "definitions": {"a": {"oneOf": ["x"], "open": true}}, "calls": {}})",
       "definitions.a.open: not a part of this kind of rule"},
      {R"({"contentType": "t", "definitions": {"a": {"fields": {}, "orOnly": ["x"]}}, "calls": {}})",
       "definitions.a.orOnly: \"x\" is no field"},
      {R"({"contentType": "t", "definitions": {"a": {"columns": ["text"], "orMore": ["b"]}},
           "calls": {}})",
       "definitions.a.orMore[0]: no definition is called \"b\""},
  };
  for (const auto& [text, fault] : kCases) {
    EXPECT_THAT([text = text] { Contract::fromJson(sample::parsed(text)); },
                testing::ThrowsMessage<InputError>(fault));
  }
  const Json badPattern = sample::parsed(R"({"contentType": "t", "definitions":
      {"a": {"pattern": "(", "called": "x"}}, "calls": {}})");
  EXPECT_THROW(Contract::fromJson(badPattern), InputError);
}

}  // namespace
}  // namespace risk_server
