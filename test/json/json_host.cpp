// A host that exchanges JSON with the library in every way: json_host URL FOLDER. Compiled with the
// library's own JSON library and with another one, it must say and send the same. What it gets is
// printed, a line each.

#include <array>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <nlohmann/json.hpp>

#include "quorvance/quorvance.h"

namespace {

using quorvance::Json;

constexpr std::chrono::seconds kPatience{60};

void print(const Json& value) { std::puts(value.dump().c_str()); }

/// Of every kind.
Json freeFormData() {
  return Json::parse(R"({"z":null,"a":[1,-2,18446744073709551615,1.5,1.0,true,"",[],{}],
                         "ü":{"k":{"text":"\u0001\"\\é"}},"":false})");
}

Json nestedObject(int depth) {
  Json value = Json::object();
  for (int i = 1; i < depth; ++i) value = Json{{"d", std::move(value)}};
  return value;
}

/// Adds to what its base sends.
class MarkedLogin : public quorvance::Login {
 public:
  using Login::Login;
  Json getJson() const override {
    Json json = Login::getJson();
    json["mark"] = {1, "two"};
    return json;
  }
};

class ContactCount : public quorvance::UserDataSource {
 public:
  Json collect() override { return {{"contacts", 17}, {"names", {"a", "b"}}}; }
};

class Face : public quorvance::FaceDetection {
 public:
  void reset() override {}
};

void sendCheckPoints(quorvance::QuorvanceManager& manager) {
  const auto user = std::make_shared<quorvance::User>(quorvance::User{
      .userId = "anna",
      .address = std::make_shared<quorvance::Address>(quorvance::Address{.city = "Zürich"})});
  quorvance::Launch launch;
  launch.setAdditionalData(freeFormData());
  manager.arriveToCheckPoint(launch);
  manager.arriveToCheckPoint(MarkedLogin(user));
  manager.arriveToCheckPoint(quorvance::Register(user));
  manager.arriveToCheckPoint(quorvance::AddPaymentMethod("anna", "token"));
  manager.arriveToCheckPoint(
      quorvance::Transaction({.destinationId = "to", .amount = 12.5, .user = user}));
  manager.setPendingUserData(freeFormData());
  manager.arriveToCheckPoint(quorvance::CheckPoint(quorvance::CheckPointType::NONE));
  manager.setPendingUserData({{"calendars", 3}});
  manager.setPendingUserData({{"calendars", std::numeric_limits<double>::quiet_NaN()}});
  manager.setPendingUserData(nestedObject(200));
  manager.arriveToCheckPoint(quorvance::General());
  // None of these can be sent.
  for (const Json& data : {nestedObject(200), Json{{"n", std::numeric_limits<double>::infinity()}},
                           Json{{"b", Json::binary({1, 2})}}}) {
    launch.setAdditionalData(data);
    manager.arriveToCheckPoint(launch);
  }
}

void printConversions() {
  const Json data = {{"additionalData", freeFormData()},
                     {"user", {{"user_id", "anna"}, {"isKYCVerified", "VERIFIED"}}},
                     {"amount", 5},
                     {"curType", "EUR"},
                     {"payment", {{"creditCardDetail", {{"yearExpiryDate", 2030}}}}}};
  for (const char* const type : {"LAUNCH", "LOGIN", "REGISTER", "TRANSACTION", "ADD_PAYMENT_METHOD",
                                 "GENERAL", "PASSWORD_CHANGE", "none"}) {
    Json json = data;
    json["checkpoint_type"] = type;
    quorvance::PlatformError error{"before", 7, "", ""};
    const auto checkPoint = quorvance::CheckPoint::parse(json, &error);
    print(checkPoint ? checkPoint->getJson() : Json(error.domain));
    const auto plain = quorvance::CheckPoint::fromJson(json);
    print(plain ? plain->getJson() : Json());
  }
  print(quorvance::User::fromJson({{"email", "a@b"}, {"isEmailVerified", "?"}}).getJson());
  print(quorvance::Payment::fromJson(data["payment"]).getJson());
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 3) return EXIT_FAILURE;
  printConversions();
  quorvance::LinuxPlatformOptions options;
  options.dataFolder = arguments[2];
  options.userData = std::make_shared<ContactCount>();
  quorvance::Platform platform = makeLinuxPlatform(std::move(options));
  platform.faceDetection = std::make_shared<Face>();
  quorvance::QuorvanceManager manager(std::move(platform));
  manager.setupWithServerUrl(arguments[1], "anna");
  manager.initializeDeviceId();
  if (!manager.flush(kPatience)) return EXIT_FAILURE;
  sendCheckPoints(manager);
  return manager.flush(kPatience) ? EXIT_SUCCESS : EXIT_FAILURE;
}
