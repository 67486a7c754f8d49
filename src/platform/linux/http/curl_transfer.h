#pragma once

#include <curl/curl.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "quorvance/platform/http.h"
#include "quorvance/platform/http_options.h"

namespace quorvance {

/// A longer reply is cut off.
inline constexpr std::size_t kMaxReplyBytes = 8 * 1024 * 1024;
/// Stands for a time-out of 0 and less, which the HTTP library would read as "never".
inline constexpr std::chrono::milliseconds kDefaultTimeout{60'000};

/// A time-out as the HTTP library takes it: kDefaultTimeout for 0 and less, and at most an int.
long curlTimeoutMilliseconds(std::chrono::milliseconds timeout);

struct CurlHandleDeleter {
  void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
};
struct CurlListDeleter {
  void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};

/// The error of the HTTP library as the seam tells it. An empty `detail` leaves the library's own
/// words for the code.
PlatformError curlError(CURLcode code, std::string_view detail = {});

/// What the code means to the seam.
TransportFault transportFaultOf(CURLcode code);

/// One exchange at a time on one handle, which serves the next exchange again:
/// start(), then the multi interface drives handle(), then finish().
/// The session's thread only.
class CurlTransfer {
 public:
  explicit CurlTransfer(const HttpOptions& options);
  CurlTransfer(const CurlTransfer&) = delete;
  CurlTransfer& operator=(const CurlTransfer&) = delete;

  /// False when there was no memory for a handle.
  bool isUsable() const { return handle_ != nullptr; }
  CURL* handle() const { return handle_.get(); }

  /// CURLE_OK, or why the exchange cannot even begin.
  CURLcode start(HttpRequest request, HttpCompletion completion);
  /// The outcome of the exchange; afterwards the transfer holds nothing of it but the completion.
  HttpReply finish(CURLcode code);
  HttpCompletion takeCompletion();

 private:
  static curl_socket_t openSocket(void*, curlsocktype purpose, curl_sockaddr* address);
  static std::size_t onBody(char* bytes, std::size_t size, std::size_t count, void* self);
  static int onRequest(void* self, char* remote, char* local, int remotePort, int localPort);
  void setConstantOptions();
  void setHostOptions(const HttpOptions& options);
  template <class Value>
  void demand(CURLoption option, Value value);
  bool setHeaders(const std::string& contentType);
  HttpReply replyFor(CURLcode code);

  std::unique_ptr<CURL, CurlHandleDeleter> handle_;
  std::unique_ptr<curl_slist, CurlListDeleter> headers_;
  std::string contentType_;
  HttpRequest request_;
  HttpCompletion completion_;
  std::string body_;
  std::array<char, CURL_ERROR_SIZE> errorText_ = {};
  // Of an option that the host has asked for and the library refuses.
  CURLcode refusal_ = CURLE_OK;
  int timesSent_ = 0;
  bool isTooLong_ = false;
};

}  // namespace quorvance
