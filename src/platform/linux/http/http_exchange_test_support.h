#pragma once

#include <cstdint>
#include <future>
#include <string>
#include <string_view>
#include <utility>

#include "platform/linux/http/scripted_tcp_server_test_support.h"
#include "quorvance/platform/http.h"

namespace quorvance {

inline HttpRequest requestFor(std::string url, std::string body = "{}") {
  HttpRequest request;
  request.url = std::move(url);
  request.contentType = "application/json; charset=utf-8";
  request.body = std::move(body);
  return request;
}

/// Sends the request and waits for what comes of it.
inline HttpReply exchange(HttpSession& session, HttpRequest request) {
  std::promise<HttpReply> reply;
  session.send(std::move(request), [&](HttpReply result) { reply.set_value(std::move(result)); });
  return reply.get_future().get();
}

/// 0 without a transport error.
inline std::int64_t errorCode(const HttpReply& reply) {
  return reply.transportError ? reply.transportError->code : 0;
}

inline std::string bodyOf(std::string_view request) {
  return std::string(request.substr(request.find("\r\n\r\n") + 4));
}

/// A script that answers every request with the request's own body.
inline void echo(ScriptedConnection& connection) {
  for (;;) {
    const std::string request = connection.readRequest();
    if (request.empty() || !connection.writeReply(bodyOf(request))) return;
  }
}

}  // namespace quorvance
