#include "platform/linux/http/curl_transfer.h"

#include <sys/socket.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <new>
#include <optional>
#include <utility>

static_assert(LIBCURL_VERSION_NUM >= 0x075700, "libcurl 7.87 or later is needed");

namespace quorvance {
namespace {

// Smaller numbers are interim heads: the reply's own head has not come.
constexpr long kFirstFinalStatus = 200;
constexpr long kMaxConnectionAgeSeconds = 60;

}  // namespace

PlatformError curlError(CURLcode code, std::string_view detail) {
  PlatformError error;
  error.domain = "libcurl";
  error.code = code;
  error.description = curl_easy_strerror(code);
  if (!detail.empty()) error.failureReason = std::string(detail);
  return error;
}

TransportFault transportFaultOf(CURLcode code) {
  switch (code) {
    case CURLE_OPERATION_TIMEDOUT:
      return TransportFault::timedOut;
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CLIENTCERT:
    case CURLE_SSL_CRL_BADFILE:
    case CURLE_SSL_INVALIDCERTSTATUS:
    case CURLE_SSL_ISSUER_ERROR:
    case CURLE_SSL_PINNEDPUBKEYNOTMATCH:
      return TransportFault::certificate;
    case CURLE_AGAIN:
    case CURLE_FAILED_INIT:
    case CURLE_OUT_OF_MEMORY:
    case CURLE_SETOPT_OPTION_SYNTAX:
    // Files of the host's own options.
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_UNSUPPORTED_PROTOCOL:
    case CURLE_URL_MALFORMAT:
      return TransportFault::notSent;
    default:
      return TransportFault::unreachable;
  }
}

long curlTimeoutMilliseconds(std::chrono::milliseconds timeout) {
  if (timeout <= std::chrono::milliseconds::zero()) timeout = kDefaultTimeout;
  // The library refuses more than an int.
  return static_cast<long>(
      std::min<std::int64_t>(timeout.count(), std::numeric_limits<int>::max()));
}

CurlTransfer::CurlTransfer(const HttpOptions& options) : handle_(curl_easy_init()) {
  if (!isUsable()) return;
  setConstantOptions();
  setHostOptions(options);
}

// An option that is not to be had keeps every request from being sent.
template <class Value>
void CurlTransfer::demand(CURLoption option, Value value) {
  const CURLcode code = curl_easy_setopt(handle_.get(), option, value);
  if (refusal_ == CURLE_OK) refusal_ = code;
}

void CurlTransfer::setHostOptions(const HttpOptions& options) {
  const auto demandText = [&](CURLoption option, const std::string& text) {
    if (!text.empty()) demand(option, text.c_str());
  };
  demandText(CURLOPT_CAINFO, options.caFile);
  // The system's folder of certificates is a default of its own.
  if (!options.caFile.empty()) demand(CURLOPT_CAPATH, static_cast<const char*>(nullptr));
  demandText(CURLOPT_PINNEDPUBLICKEY, options.pinnedPublicKey);
  if (!options.clientCertificateFile.empty()) {
    demandText(CURLOPT_SSLCERT, options.clientCertificateFile);
    demandText(CURLOPT_SSLKEY, options.clientKeyFile);
    // Also an empty one: without any the TLS library would ask for it on the terminal.
    demand(CURLOPT_KEYPASSWD, options.clientKeyPassphrase.c_str());
  }
  demandText(CURLOPT_PROXY, options.proxyUrl);
}

void CurlTransfer::setConstantOptions() {
  CURL* const handle = handle_.get();
  curl_easy_setopt(handle, CURLOPT_PRIVATE, this);
  curl_easy_setopt(handle, CURLOPT_ERRORBUFFER, errorText_.data());
  // The host's signals and its proxy settings are its own business.
  curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(handle, CURLOPT_PROXY, "");
  curl_easy_setopt(handle, CURLOPT_NOPROXY, "");
  curl_easy_setopt(handle, CURLOPT_PROTOCOLS_STR, "http,https");
  curl_easy_setopt(handle, CURLOPT_FOLLOWLOCATION, 0L);
  curl_easy_setopt(handle, CURLOPT_HTTP_VERSION, CURL_HTTP_VERSION_1_1);
  curl_easy_setopt(handle, CURLOPT_PATH_AS_IS, 1L);
  curl_easy_setopt(handle, CURLOPT_OPENSOCKETFUNCTION, &CurlTransfer::openSocket);
  curl_easy_setopt(handle, CURLOPT_TCP_NODELAY, 1L);
  // Looked at by the next use: of a burst's connections, one may be used for ever and the rest not.
  curl_easy_setopt(handle, CURLOPT_MAXAGE_CONN, kMaxConnectionAgeSeconds);
  // Without it a hung name server holds the thread long past the time-out.
  curl_easy_setopt(handle, CURLOPT_QUICK_EXIT, 1L);
  curl_easy_setopt(handle, CURLOPT_SSLVERSION, CURL_SSLVERSION_TLSv1_2);
  curl_easy_setopt(handle, CURLOPT_SSL_VERIFYPEER, 1L);
  curl_easy_setopt(handle, CURLOPT_SSL_VERIFYHOST, 2L);
  curl_easy_setopt(handle, CURLOPT_POST, 1L);
  curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, &CurlTransfer::onBody);
  curl_easy_setopt(handle, CURLOPT_WRITEDATA, this);
  curl_easy_setopt(handle, CURLOPT_MAXFILESIZE_LARGE, curl_off_t{kMaxReplyBytes});
  // By itself the library writes a request again when a kept connection dies unanswered.
  curl_easy_setopt(handle, CURLOPT_PREREQFUNCTION, &CurlTransfer::onRequest);
  curl_easy_setopt(handle, CURLOPT_PREREQDATA, this);
}

bool CurlTransfer::setHeaders(const std::string& contentType) {
  if (headers_ != nullptr && contentType == contentType_) return true;
  const std::string lines[] = {"Content-Type: " + contentType, "Accept:", "Expect:"};
  std::unique_ptr<curl_slist, CurlListDeleter> list;
  for (const std::string& line : lines) {
    curl_slist* const longer = curl_slist_append(list.get(), line.c_str());
    if (longer == nullptr) return false;
    static_cast<void>(list.release());
    list.reset(longer);
  }
  curl_easy_setopt(handle_.get(), CURLOPT_HTTPHEADER, list.get());
  headers_ = std::move(list);
  contentType_ = contentType;
  return true;
}

CURLcode CurlTransfer::start(HttpRequest request, HttpCompletion completion) {
  request_ = std::move(request);
  completion_ = std::move(completion);
  body_.clear();
  errorText_.front() = '\0';
  timesSent_ = 0;
  isTooLong_ = false;
  if (refusal_ != CURLE_OK) return refusal_;
  CURL* const handle = handle_.get();
  if (!setHeaders(request_.contentType)) return CURLE_OUT_OF_MEMORY;
  const long timeout = curlTimeoutMilliseconds(request_.timeout);
  curl_easy_setopt(handle, CURLOPT_TIMEOUT_MS, timeout);
  // Its own limit for the connection, 300 s, would cut a longer one short.
  curl_easy_setopt(handle, CURLOPT_CONNECTTIMEOUT_MS, timeout);
  // Sent from where it stands, together with the head.
  curl_easy_setopt(handle, CURLOPT_POSTFIELDS, request_.body.data());
  curl_easy_setopt(handle, CURLOPT_POSTFIELDSIZE_LARGE,
                   static_cast<curl_off_t>(request_.body.size()));
  return curl_easy_setopt(handle, CURLOPT_URL, request_.url.c_str());
}

HttpReply CurlTransfer::finish(CURLcode code) {
  HttpReply reply = replyFor(code);
  request_ = HttpRequest();
  body_ = std::string();
  return reply;
}

HttpReply CurlTransfer::replyFor(CURLcode code) {
  HttpReply reply;
  long status = 0;
  curl_easy_getinfo(handle_.get(), CURLINFO_RESPONSE_CODE, &status);
  if (status >= kFirstFinalStatus) reply.status = static_cast<int>(status);
  if (code == CURLE_OK) {
    reply.body = std::move(body_);
  } else if (isTooLong_) {
    reply.transportError = curlError(CURLE_FILESIZE_EXCEEDED);
  } else if (timesSent_ > 1) {
    reply.transportError = curlError(CURLE_GOT_NOTHING, "the connection ended without an answer");
  } else {
    reply.transportError = curlError(code, errorText_.data());
    reply.fault = transportFaultOf(code);
  }
  return reply;
}

HttpCompletion CurlTransfer::takeCompletion() { return std::exchange(completion_, nullptr); }

// Programs that the host starts must not inherit a connection.
curl_socket_t CurlTransfer::openSocket(void*, curlsocktype, curl_sockaddr* address) {
  return socket(address->family, address->socktype | SOCK_CLOEXEC, address->protocol);
}

std::size_t CurlTransfer::onBody(char* bytes, std::size_t size, std::size_t count, void* self) {
  auto& transfer = *static_cast<CurlTransfer*>(self);
  const std::size_t length = size * count;
  constexpr std::size_t kRefused = 0;
  if (length > kMaxReplyBytes - transfer.body_.size()) {
    transfer.isTooLong_ = true;
    return kRefused;
  }
  try {
    transfer.body_.append(bytes, length);
  } catch (const std::bad_alloc&) {
    return kRefused;  // nothing may be thrown through the library's C code
  }
  return length;
}

// Called whenever a connection is ready and before a byte of the request is written to it.
int CurlTransfer::onRequest(void* self, char*, char*, int, int) {
  auto& transfer = *static_cast<CurlTransfer*>(self);
  ++transfer.timesSent_;
  return transfer.timesSent_ == 1 ? CURL_PREREQFUNC_OK : CURL_PREREQFUNC_ABORT;
}

}  // namespace quorvance
