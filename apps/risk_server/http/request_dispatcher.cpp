#include "apps/risk_server/http/request_dispatcher.h"

#include <csignal>
#include <cstdint>
#include <utility>

#include "apps/risk_server/http/reply_sender.h"
#include "apps/risk_server/server_clock.h"

namespace risk_server {
namespace {

constexpr const char* kReplyContentType = "application/json; charset=utf-8";
// A client that is busy never meets the bound.
constexpr std::size_t kMaxRequestsPerConnection = 10'000'000;

using SteadyClock = std::chrono::steady_clock;

// The parser's callbacks do not say which connection they are about.
struct ServedRequest {
  ClientConnection* connection = nullptr;
  SteadyClock::time_point begin;
  std::int64_t received = 0;
  bool delivered = false;  // the handler has answered
  HttpReply reply;         // without what the parser has got of it
};
thread_local ServedRequest served;

HttpRequest requestOf(const httplib::Request& request) {
  HttpRequest made;
  made.received = served.received;
  made.method = served.connection->method();
  made.target = served.connection->target();
  made.headers.assign(request.headers.begin(), request.headers.end());
  made.body = request.body;
  return made;
}

std::string faultOfStatus(int status) {
  switch (status) {
    case 413:
      return "the body is too large";
    case 414:
      return "the request target is too long";
    case 416:
      return "the Range header cannot be read";
    case 500:
      return "the server failed";
    default:
      return "not a whole, well-formed HTTP request";
  }
}

// A stream's head is our own: the parser announces a length.
std::string headOfStream(const HttpReply& reply) {
  std::string head = "HTTP/1.1 " + std::to_string(reply.status) + " OK\r\nConnection: close\r\n";
  for (const auto& [name, value] : reply.headers) {
    head.append(name).append(": ").append(value).append("\r\n");
  }
  return head + "\r\n";
}

bool isOrdinary(const HttpReply& reply) { return reply.delivery.isPlain() && !reply.stream; }

void deliver(HttpReply reply, httplib::Response& response) {
  response.status = reply.status;
  response.set_content(reply.body, kReplyContentType);
  if (!reply.allow.empty()) response.set_header("Allow", reply.allow);
  for (const auto& [name, value] : reply.headers) {
    response.headers.erase(name);
    response.set_header(name, value);
  }
  if (!isOrdinary(reply)) served.connection->holdOutput();
  served.delivered = true;
  served.reply = std::move(reply);
}

Delivery sendStream(ClientConnection& connection, const HttpReply& reply) {
  connection.closeAfterReply();
  if (connection.send(headOfStream(reply))) reply.stream(connection);
  return connection.clientLeft() ? Delivery::kClientLeft : Delivery::kWhole;
}

// Sends what was held back; else the parser has sent it already.
Delivery sendRest(ClientConnection& connection, const HttpReply& reply) {
  if (isOrdinary(reply)) return connection.clientLeft() ? Delivery::kClientLeft : Delivery::kWhole;
  const std::string held = connection.takeHeldOutput();
  if (reply.stream) return sendStream(connection, reply);
  return sendReply(connection, held, reply.delivery);
}

void tellWhenSent(const HttpReply& reply, Delivery delivery, SteadyClock::time_point begin) {
  if (!reply.whenSent) return;
  const auto took = SteadyClock::now() - begin;
  reply.whenSent({delivery, millisecondsNow(),
                  std::chrono::duration_cast<std::chrono::microseconds>(took).count()});
}

bool carriesBody(const httplib::Request& request) {
  return request.has_header("Transfer-Encoding") ||
         (request.has_header("Content-Length") &&
          request.get_header_value("Content-Length") != "0");
}

// Where such a body ends is anybody's guess (RFC 9112, 6.3).
bool hasSeveralLengths(const httplib::Request& request) {
  const std::size_t lengths = request.get_header_value_count("Content-Length");
  return lengths > 1 || (lengths == 1 && request.has_header("Transfer-Encoding"));
}

}  // namespace

std::unique_ptr<RequestDispatcher> RequestDispatcher::make(HttpListener::Handler handler,
                                                           std::chrono::seconds idle) {
  struct sigaction kept {};
  sigaction(SIGPIPE, nullptr, &kept);
  std::unique_ptr<RequestDispatcher> made(new RequestDispatcher(std::move(handler), idle));
  sigaction(SIGPIPE, &kept, nullptr);
  return made;
}

RequestDispatcher::RequestDispatcher(HttpListener::Handler handler, std::chrono::seconds idle)
    : handler_(std::move(handler)) {
  set_keep_alive_max_count(kMaxRequestsPerConnection);
  set_keep_alive_timeout(idle.count());
  set_payload_max_length(kMaxBodyBytes);
  const auto answer = [this](const httplib::Request& request, httplib::Response& response) {
    answerWhole(request, response);
  };
  // serveOne() gives every request this path: the handler routes on the undecoded target.
  Get("/", answer);
  Post("/", answer);
  Put("/", answer);
  Patch("/", answer);
  Delete("/", answer);
  Options("/", answer);
  set_pre_routing_handler([this](const httplib::Request& request, httplib::Response& response) {
    return refuseUnreadable(request, response);
  });
  set_error_handler(
      HandlerWithResponse([this](const httplib::Request& request, httplib::Response& response) {
        return answerFailure(request, response);
      }));
}

bool RequestDispatcher::serveOne(ClientConnection& connection) {
  served = {&connection, SteadyClock::now(), millisecondsNow(), false, {}};
  connection.beginRequest();
  const SteadyClock::time_point begin = served.begin;
  bool clientCloses = false;
  bool headersRead = false;
  const auto prepare = [&](httplib::Request& request) {
    headersRead = true;
    connection.endHead();
    request.path.assign(1, '/');
    request.ranges.clear();  // replies are never partial
    // Replies go out byte for byte as the handler made them.
    request.headers.erase("Accept-Encoding");
  };
  const bool written = process_request(connection, false, clientCloses, prepare);
  const HttpReply reply = std::exchange(served, {}).reply;
  tellWhenSent(reply, sendRest(connection, reply), begin);
  if (!headersRead) connection.closeAfterReply();
  return written && !clientCloses && !connection.closesAfterReply();
}

void RequestDispatcher::answerWhole(const httplib::Request& request, httplib::Response& response) {
  const bool bodyWasRead = request.method == "POST" || request.method == "PUT" ||
                           request.method == "PATCH" || request.method == "DELETE";
  if (!bodyWasRead && carriesBody(request)) served.connection->closeAfterReply();
  // A chunked body does not announce its length.
  if (request.body.size() > kMaxBodyBytes) {
    answerFault(413, faultOfStatus(413), request, response);
    return;
  }
  deliver(handler_(requestOf(request)), response);
}

void RequestDispatcher::answerFault(int status, const std::string& fault,
                                    const httplib::Request& request, httplib::Response& response) {
  served.connection->closeAfterReply();
  response.set_header("Connection", "close");
  HttpRequest refused = requestOf(request);
  refused.fault = fault;
  refused.faultStatus = status;
  deliver(handler_(refused), response);
}

// Before the body is read: bodies that would not arrive as they were sent, or not at all.
RequestDispatcher::HandlerResponse RequestDispatcher::refuseUnreadable(
    const httplib::Request& request, httplib::Response& response) {
  if (request.has_header("Content-Encoding")) {
    answerFault(415, "Content-Encoding: not expected", request, response);
  } else if (request.get_header_value<std::uint64_t>("Content-Length") > kMaxBodyBytes) {
    answerFault(413, faultOfStatus(413), request, response);
  } else if (hasSeveralLengths(request)) {
    answerFault(400, "Content-Length: one length is expected", request, response);
  } else if (request.is_multipart_form_data()) {
    answerFault(400, "Content-Type: a form is not expected", request, response);
  } else {
    return HandlerResponse::Unhandled;
  }
  return HandlerResponse::Handled;
}

// Also called for what the handler answered itself.
RequestDispatcher::HandlerResponse RequestDispatcher::answerFailure(const httplib::Request& request,
                                                                    httplib::Response& response) {
  if (served.delivered) return HandlerResponse::Unhandled;
  const int status = served.connection->requestOverran() ? 413 : response.status;
  answerFault(status, faultOfStatus(status), request, response);
  return HandlerResponse::Handled;
}

}  // namespace risk_server
