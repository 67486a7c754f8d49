#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/json.h"
#include "platform/testing/manual_executor.h"
#include "quorvance/platform/http.h"

namespace quorvance {

/// A request that the session was given.
struct SentRequest {
  HttpRequest request;
  Json body;
  /// Milliseconds since 1970, when it was sent.
  std::int64_t sentAt = 0;

  /// The URL ends in the path.
  bool isFor(std::string_view path) const { return request.url.ends_with(path); }
};

/// An HTTP session whose replies a test scripts. Work runs on the executor.
class ScriptedHttp : public HttpSession {
 public:
  using Responder = std::function<HttpReply(const SentRequest&)>;

  explicit ScriptedHttp(std::shared_ptr<ManualExecutor> executor);

  void dispatch(Task task) override;
  void send(HttpRequest request, HttpCompletion completion) override;

  /// Answers every request to URLs that end in `path`; without one the reply is 200 with {}.
  void answer(std::string path, Responder responder);
  void answer(std::string path, HttpReply reply);
  /// Answers the next request to `path`, before what `answer` says; several queue up.
  void answerOnce(std::string path, HttpReply reply);
  /// Requests stay unanswered from now on, and work on the session's thread undone.
  void neverAnswer();

  /// Drops what is unanswered.
  void dropAll();

  std::vector<SentRequest> sent() const;
  std::vector<SentRequest> sentTo(std::string_view path) const;
  std::size_t countTo(std::string_view path) const { return sentTo(path).size(); }

 private:
  HttpReply replyTo(const SentRequest& request);

  const std::shared_ptr<ManualExecutor> executor_;
  mutable std::mutex mutex_;
  bool answers_ = true;
  std::vector<SentRequest> sent_;
  std::vector<std::pair<std::string, Responder>> responders_;
  std::vector<std::pair<std::string, std::deque<HttpReply>>> once_;
  // Kept so that nobody takes an unanswered completion for a dropped one.
  std::vector<HttpCompletion> unanswered_;
  std::vector<Task> undone_;
};

HttpReply okReply(std::string_view body);
HttpReply statusReply(int status, std::string_view body = "{}");
HttpReply refusedReply();

}  // namespace quorvance
