// Between the HTTP parser and the handler: everything that arrives on a connection, whole or not,
// becomes one call of the handler.
#pragma once

#include <httplib.h>

#include <chrono>
#include <memory>
#include <string>

#include "apps/risk_server/http/client_connection.h"
#include "apps/risk_server/http/http_listener.h"

namespace risk_server {

// Any thread, a connection each; immutable after construction.
class RequestDispatcher : private httplib::Server {
 public:
  // The parser's server ignores SIGPIPE for the whole process when it is made; this puts the
  // process's own choice back.
  // Kept connections are told the idle time.
  static std::unique_ptr<RequestDispatcher> make(HttpListener::Handler handler,
                                                 std::chrono::seconds idle);

  // Reads one request and writes its reply. False when the connection is to be closed.
  bool serveOne(ClientConnection& connection);

 private:
  void answerWhole(const httplib::Request& request, httplib::Response& response);
  void answerFault(int status, const std::string& fault, const httplib::Request& request,
                   httplib::Response& response);
  HandlerResponse refuseUnreadable(const httplib::Request& request, httplib::Response& response);
  HandlerResponse answerFailure(const httplib::Request& request, httplib::Response& response);

  RequestDispatcher(HttpListener::Handler handler, std::chrono::seconds idle);

  HttpListener::Handler handler_;
};

}  // namespace risk_server
