#include "benchmarks/verdict/curl_client.h"

#include <curl/curl.h>

#include <cstdlib>
#include <nlohmann/json.hpp>
#include <utility>
#include <vector>

namespace quorvance {
namespace {

using Value = nlohmann::ordered_json;

// As the library builds: with room for all members, and children moved into their parents.
Value built(const Value& model) {
  if (!model.is_structured()) return model;
  Value value(model.type());
  if (model.is_array()) {
    value.get_ref<Value::array_t&>().reserve(model.size());
    for (const Value& element : model) value.push_back(built(element));
    return value;
  }
  auto& members = value.get_ref<Value::object_t&>();
  members.reserve(model.size());
  for (const auto& [key, member] : model.get_ref<const Value::object_t&>()) {
    members.emplace_back(key, built(member));
  }
  return value;
}

/// One exchange at a time over a handle of its own.
class Exchange {
 public:
  Exchange(const std::string& url, const Value& model) : model_(model) {
    headers_ = curl_slist_append(nullptr, "Content-Type: application/json; charset=utf-8");
    headers_ = curl_slist_append(headers_, "Accept:");
    headers_ = curl_slist_append(headers_, "Expect:");
    curl_easy_setopt(handle_, CURLOPT_URL, url.c_str());
    curl_easy_setopt(handle_, CURLOPT_HTTPHEADER, headers_);
    curl_easy_setopt(handle_, CURLOPT_POST, 1L);
    curl_easy_setopt(handle_, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(handle_, CURLOPT_PRIVATE, this);
    curl_easy_setopt(handle_, CURLOPT_WRITEFUNCTION, &Exchange::onBody);
    curl_easy_setopt(handle_, CURLOPT_WRITEDATA, this);
  }
  ~Exchange() {
    curl_easy_cleanup(handle_);
    curl_slist_free_all(headers_);
  }
  Exchange(const Exchange&) = delete;
  Exchange& operator=(const Exchange&) = delete;

  CURL* handle() const { return handle_; }

  void begin() {
    body_ = built(model_).dump();
    reply_.clear();
    curl_easy_setopt(handle_, CURLOPT_POSTFIELDS, body_.data());
    curl_easy_setopt(handle_, CURLOPT_POSTFIELDSIZE, static_cast<long>(body_.size()));
  }
  void end() const {
    if (!Value::parse(reply_).contains("risk")) std::abort();
  }

 private:
  static std::size_t onBody(char* bytes, std::size_t size, std::size_t count, void* self) {
    static_cast<Exchange*>(self)->reply_.append(bytes, size * count);
    return size * count;
  }

  const Value& model_;
  CURL* const handle_ = curl_easy_init();
  curl_slist* headers_ = nullptr;
  std::string body_;
  std::string reply_;
};

// Ends what is done and begins as much again; returns how many have ended.
int turnOver(CURLM* multi, int stillToBegin) {
  int ended = 0;
  int left = 0;
  while (const CURLMsg* message = curl_multi_info_read(multi, &left)) {
    CURL* const handle = message->easy_handle;
    if (message->data.result != CURLE_OK) std::abort();
    Exchange* exchange = nullptr;
    curl_easy_getinfo(handle, CURLINFO_PRIVATE, &exchange);
    curl_multi_remove_handle(multi, handle);
    exchange->end();
    if (ended++ >= stillToBegin) continue;
    exchange->begin();
    curl_multi_add_handle(multi, handle);
  }
  return ended;
}

}  // namespace

CurlClient::CurlClient(std::string url, std::string body)
    : url_(std::move(url)), body_(std::move(body)) {}

Figures CurlClient::inTurn(int count) const {
  curl_global_init(CURL_GLOBAL_DEFAULT);
  const Value model = Value::parse(body_);
  Exchange exchange(url_, model);
  Figures figures;
  for (int i = 0; i < count; ++i) {
    const double before = nowMicroseconds();
    exchange.begin();
    if (curl_easy_perform(exchange.handle()) != CURLE_OK) std::abort();
    exchange.end();
    figures.push_back(nowMicroseconds() - before);
  }
  return figures;
}

double CurlClient::perSecond(int count, int inFlight) const {
  curl_global_init(CURL_GLOBAL_DEFAULT);
  const Value model = Value::parse(body_);
  CURLM* const multi = curl_multi_init();
  std::vector<std::unique_ptr<Exchange>> exchanges;
  for (int i = 0; i < inFlight; ++i) {
    Exchange& exchange = *exchanges.emplace_back(std::make_unique<Exchange>(url_, model));
    exchange.begin();
    curl_multi_add_handle(multi, exchange.handle());
  }
  const double before = nowMicroseconds();
  int ended = 0;
  while (ended < count) {
    int running = 0;
    curl_multi_perform(multi, &running);
    ended += turnOver(multi, count - ended - running);
    if (ended < count) curl_multi_poll(multi, nullptr, 0, 1000, nullptr);
  }
  const double seconds = (nowMicroseconds() - before) / 1e6;
  return count / seconds;
}

Figures CurlClient::buildings(int count) const {
  const Value model = Value::parse(body_);
  Figures figures;
  for (int i = 0; i < count; ++i) {
    const double before = nowMicroseconds();
    const Value value = built(model);
    figures.push_back(nowMicroseconds() - before);
  }
  return figures;
}

}  // namespace quorvance
