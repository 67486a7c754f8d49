#include "platform/linux/http/curl_transfer.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <future>
#include <optional>
#include <string>

#include "platform/linux/http/curl_http_session.h"
#include "platform/linux/http/http_exchange_test_support.h"

namespace quorvance {
namespace {

using std::chrono::milliseconds;

TEST(CurlTransferTest, WritesNothingButWhatIsNeededAndAsksForNoLeave) {
  std::promise<std::string> seen;
  ScriptedTcpServer server([&](ScriptedConnection& connection) {
    seen.set_value(connection.readRequest());
    connection.writeReply("{}");
  });
  CurlHttpSession session;
  const std::string path = "/base//qrsk-med/3.0/../x%2Fy/?q=1";
  const std::string body(3'000'000, 'x');
  EXPECT_EQ(exchange(session, requestFor(server.url(path), body)).status, 200);
  const std::string request = seen.get_future().get();
  EXPECT_EQ(request.substr(0, request.size() - body.size()),
            "POST " + path + " HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(server.port()) +
                "\r\nContent-Type: application/json; charset=utf-8\r\n"
                "Content-Length: 3000000\r\n\r\n");
  EXPECT_TRUE(bodyOf(request) == body);  // compared without printing it
}

TEST(CurlTransferTest, BrokenRepliesAreTransportErrorsWithTheStatusThatCame) {
  struct Case {
    std::string_view bytes;
    bool isReset;
    std::optional<int> status;
    CURLcode error;
  };
  const Case cases[] = {
      {"", false, {}, CURLE_GOT_NOTHING},
      {"", true, {}, CURLE_RECV_ERROR},
      {"HTTP/1.1 503 Busy\r\nContent-Length: 4\r\n\r\nab", false, 503, CURLE_PARTIAL_FILE},
      {"HTTP/1.1 200 OK\r\nContent-Length: 4\r\n\r\nab", true, 200, CURLE_RECV_ERROR},
      {"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n4\r\nab", false, 200,
       CURLE_PARTIAL_FILE},
      {"+OK this is no web server\r\n", false, {}, CURLE_UNSUPPORTED_PROTOCOL},
  };
  for (const Case& c : cases) {
    ScriptedTcpServer server([&](ScriptedConnection& connection) {
      connection.readRequest();
      connection.write(c.bytes);
      if (c.isReset) connection.resetAtEnd();
    });
    CurlHttpSession session;
    const HttpReply reply = exchange(session, requestFor(server.url()));
    EXPECT_EQ(errorCode(reply), c.error) << c.bytes;
    EXPECT_EQ(reply.transportError->domain, "libcurl");
    EXPECT_TRUE(!reply.transportError->description.empty() && reply.transportError->failureReason);
    EXPECT_EQ(reply.status, c.status) << c.bytes;
    EXPECT_EQ(reply.body, std::nullopt) << c.bytes;
  }
}

TEST(CurlTransferTest, RepliesHaveABodyBeItEmptyAndAreTakenAsTheyCome) {
  struct Case {
    std::string_view bytes;
    int status;
    std::string_view body;
  };
  const Case cases[] = {
      {"HTTP/1.1 204 No Content\r\n\r\n", 204, ""},
      {"HTTP/1.0 200 OK\r\n\r\nuntil the end", 200, "until the end"},
      {"HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 200 OK\r\nContent-Length: 1\r\n\r\nx", 200, "x"},
      {"HTTP/1.1 302 Found\r\nLocation: /elsewhere\r\nContent-Length: 2\r\n\r\nno", 302, "no"},
      {"HTTP/1.1 200 OK\r\nContent-Encoding: gzip\r\nContent-Length: 3\r\n\r\nraw", 200, "raw"},
      {"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n2\r\nab\r\n1\r\nc\r\n0\r\n\r\n", 200,
       "abc"},
  };
  for (const Case& c : cases) {
    ScriptedTcpServer server([&](ScriptedConnection& connection) {
      connection.readRequest();
      connection.write(c.bytes);
    });
    CurlHttpSession session;
    const HttpReply reply = exchange(session, requestFor(server.url()));
    EXPECT_FALSE(reply.transportError) << c.bytes;
    EXPECT_EQ(reply.status, c.status) << c.bytes;
    EXPECT_EQ(reply.body, c.body) << c.bytes;
    EXPECT_EQ(server.connections(), 1U) << c.bytes;
  }
}

// A reply that announces too much is not waited for.
TEST(CurlTransferTest, RepliesAreCutOffBeyondTheLimit) {
  for (const bool isLengthTold : {true, false}) {
    for (const bool fits : {true, false}) {
      const std::size_t length = kMaxReplyBytes + (fits ? 0 : 1);
      ScriptedTcpServer server([&](ScriptedConnection& connection) {
        connection.readRequest();
        const std::string told = "Content-Length: " + std::to_string(length) + "\r\n";
        connection.write("HTTP/1.1 200 OK\r\n" + (isLengthTold ? told : "") + "\r\n");
        if (fits || !isLengthTold) connection.write(std::string(length, 'x'));
        if (isLengthTold) connection.waitForEnd();
      });
      CurlHttpSession session;
      const HttpReply reply = exchange(session, requestFor(server.url()));
      EXPECT_EQ(errorCode(reply), fits ? CURLE_OK : CURLE_FILESIZE_EXCEEDED) << isLengthTold;
      EXPECT_EQ(reply.status, 200);
      EXPECT_EQ(reply.body.value_or("").size(), fits ? length : 0);
      EXPECT_EQ(reply.body.has_value(), fits);
    }
  }
}

TEST(CurlTransferTest, ATimeoutOfNothingIsTheDefaultAndNotNever) {
  EXPECT_EQ(curlTimeoutMilliseconds(milliseconds(0)), 60'000);
  EXPECT_EQ(curlTimeoutMilliseconds(milliseconds(-1)), 60'000);
  EXPECT_EQ(curlTimeoutMilliseconds(milliseconds(1)), 1);
  EXPECT_EQ(curlTimeoutMilliseconds(milliseconds::max()), 2'147'483'647);
}

TEST(CurlTransferTest, TakesNoProxyFromTheEnvironment) {
  ScriptedTcpServer server(echo);
  ScriptedTcpServer proxy([](ScriptedConnection& connection) { connection.writeReply("proxy"); });
  setenv("http_proxy", proxy.url().c_str(), 1);
  CurlHttpSession session;
  EXPECT_EQ(exchange(session, requestFor(server.url(), "direct")).body, "direct");
  unsetenv("http_proxy");
  EXPECT_EQ(proxy.connections(), 0U);
}

TEST(CurlTransferTest, OffersNoTlsBelow12AndSendsNothingInTheClear) {
  std::promise<std::string> seen;
  ScriptedTcpServer server([&](ScriptedConnection& connection) {
    seen.set_value(connection.readSome());
    connection.write("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
  });
  CurlHttpSession session;
  const std::string url = "https" + server.url().substr(4);
  const HttpReply reply = exchange(session, requestFor(url, "secret"));
  EXPECT_EQ(errorCode(reply), CURLE_SSL_CONNECT_ERROR);
  const std::string hello = seen.get_future().get();
  EXPECT_EQ(hello.find("secret"), std::string::npos);
  // The extension "supported_versions" (RFC 8446, section 4.2.1): TLS 1.3 and TLS 1.2.
  const std::string versions("\x00\x2b\x00\x05\x04\x03\x04\x03\x03", 9);
  EXPECT_NE(hello.find(versions), std::string::npos);
}

}  // namespace
}  // namespace quorvance
