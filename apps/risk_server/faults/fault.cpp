#include "apps/risk_server/faults/fault.h"

#include <utility>

namespace risk_server {

bool statusForbidsBody(int status) { return status == 204 || status == 304; }

HttpReply replyUnderFault(const Fault& fault, HttpReply normal) {
  HttpReply reply = std::move(normal);
  if (fault.body) {
    reply.body = fault.body();
    reply.status = 200;
    reply.allow.clear();
  }
  if (fault.status) reply.status = *fault.status;
  if (statusForbidsBody(reply.status)) reply.body.clear();
  reply.headers = fault.headers;
  reply.delivery = fault.delivery;
  return reply;
}

}  // namespace risk_server
