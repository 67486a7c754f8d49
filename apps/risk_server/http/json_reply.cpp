#include "apps/risk_server/http/json_reply.h"

namespace risk_server {

HttpReply jsonReply(const Json& body) {
  HttpReply reply;
  reply.body = dumpServerJson(body);
  return reply;
}

HttpReply acceptedReply(const Json& response) {
  Json body = Json::object();
  body["response"] = response;
  return jsonReply(body);
}

HttpReply refusedReply(int status, const std::string& fault, const std::string& allow) {
  Json body = Json::object();
  body["error"] = fault;
  HttpReply reply = jsonReply(body);
  reply.status = status;
  reply.allow = allow;
  return reply;
}

}  // namespace risk_server
