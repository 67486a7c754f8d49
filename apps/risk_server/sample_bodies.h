// For tests: bodies as a well-behaved client sends them.
#pragma once

#include <string>

#include "apps/risk_server/server_json.h"

namespace risk_server::sample {

inline constexpr const char* kContentType = "application/json; charset=utf-8";
inline constexpr const char* kEnrichPath = "/qrsk-med/3.0/ThirdPartyCacheEnrichment/";
inline constexpr const char* kUuid = "7F3A9C52-04BE-4D17-9A6E-C0FFEE123456";

inline Json parsed(const std::string& text) { return readServerJson(text, "sample"); }

// The blocks that every call carries.
inline Json commonBody(const std::string& user = "alice") {
  Json body = parsed(R"({"keys": {"device_id": "d-1", "version": "1.0"},
      "session": {"idSession": "s-1", "timeSession": 1700000000123}, "version": "1.0"})");
  body["keys"]["user_id"] = user;
  body["keys"]["requestID"] = kUuid;
  body["keys"]["app_uuid"] = kUuid;
  return body;
}

inline Json permissions() {
  return parsed(R"({"collectTime": 1, "location": {"latitude": 1.5, "altitude": 3},
      "permissions": ["CAMERA"], "ignorePermissions": [], "askedPermissions": ["PHOTO"]})");
}

inline Json user() {
  return parsed(R"({"user_id": "alice", "isEmailVerified": "VERIFIED",
      "isPhoneUserVerified": "UNKNOWN", "isKYCVerified": "UNKNOWN", "user_address": {}})");
}

// A checkpoint call; `checkpoint` stands under its own "checkpoint_type".
inline Json checkpointBody(const Json& checkpoint, const std::string& user = "alice") {
  const std::string word = *findText(checkpoint, "checkpoint_type");
  Json body = commonBody(user);
  body["keys"]["checkpoint"] = word;
  if (word != "UPDATE_DETAILS") body["checkpoint_additional_data"] = permissions();
  body[word] = checkpoint;
  return body;
}

inline Json plainCheckpoint(const std::string& word) {
  Json checkpoint = Json::object();
  checkpoint["checkpoint_type"] = word;
  return checkpoint;
}

inline Json transaction() {
  Json checkpoint = parsed(R"({"checkpoint_type": "TRANSACTION", "amount": 12, "timeStamp": 1500,
      "transactionType": "P2P", "curType": "XAG", "destinationId": "bob", "billingAddress": {},
      "shippingAddress": {"city": "Porto"}, "payment": {"creditCardDetail": {"card_token": "t"}},
      "authorizationResponse": {"threeDSResponseECI": "5"},
      "merchant_details": {"merchant_address": {}}})");
  checkpoint["user"] = user();
  return checkpoint;
}

inline Json deviceIdentifierBody() {
  Json body = commonBody();
  body["device_data"] = parsed(R"({"collectTime": 1})");
  body["device_data"]["uuid"] = kUuid;
  return body;
}

}  // namespace risk_server::sample
