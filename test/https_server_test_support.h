#pragma once

#include <gtest/gtest.h>
#include <httplib.h>

#include <cstdlib>
#include <string>
#include <thread>

namespace quorvance {

inline void runOpenssl(const std::string& arguments) {
  const std::string command = "openssl " + arguments + " 2>/dev/null";
  ASSERT_EQ(std::system(command.c_str()), 0) << command;
}

/// Makes STEM.pem and its STEM.key: a certificate with -x509 among the arguments, else a request.
inline void makeCertificate(const std::string& stem, const std::string& arguments) {
  runOpenssl("req -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -days 2 -subj /CN=test " +
             arguments + " -keyout " + stem + ".key -out " + stem + ".pem");
}

/// Answers every call over TLS with a verdict, under the certificate STEM.pem.
class HttpsServer {
 public:
  HttpsServer(const std::string& stem, std::size_t callsOfAConnection)
      : server_((stem + ".pem").c_str(), (stem + ".key").c_str()) {
    constexpr int kServerThreads = 64;
    server_.new_task_queue = [] { return new httplib::ThreadPool(kServerThreads); };
    server_.set_keep_alive_max_count(callsOfAConnection);
    server_.Post(".*", [](const httplib::Request&, httplib::Response& response) {
      response.set_content(R"({"risk":1,"signedRisk":"signed"})", "application/json");
    });
    port_ = server_.bind_to_any_port("127.0.0.1");
    thread_ = std::thread([this] { server_.listen_after_bind(); });
    while (!server_.is_running()) std::this_thread::yield();  // before that stop() does nothing
  }
  ~HttpsServer() {
    server_.stop();
    thread_.join();
  }
  HttpsServer(const HttpsServer&) = delete;
  HttpsServer& operator=(const HttpsServer&) = delete;

  std::string url() const { return "https://127.0.0.1:" + std::to_string(port_) + "/"; }

 private:
  httplib::SSLServer server_;
  int port_ = 0;
  std::thread thread_;
};

}  // namespace quorvance
