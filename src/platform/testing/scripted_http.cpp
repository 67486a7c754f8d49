#include "platform/testing/scripted_http.h"

#include <algorithm>
#include <utility>

namespace quorvance {

ScriptedHttp::ScriptedHttp(std::shared_ptr<ManualExecutor> executor)
    : executor_(std::move(executor)) {}

void ScriptedHttp::dispatch(Task task) {
  const std::lock_guard lock(mutex_);
  if (answers_) {
    executor_->post(std::move(task));
  } else {
    undone_.push_back(std::move(task));
  }
}

void ScriptedHttp::send(HttpRequest request, HttpCompletion completion) {
  SentRequest sent{std::move(request), Json(), executor_->nowMilliseconds()};
  sent.body = parseJson(sent.request.body).value_or(Json());
  {
    const std::lock_guard lock(mutex_);
    sent_.push_back(sent);
    if (!answers_) {
      unanswered_.push_back(std::move(completion));
      return;
    }
  }
  executor_->post(
      [reply = replyTo(sent), completion = std::move(completion)] { completion(reply); });
}

HttpReply ScriptedHttp::replyTo(const SentRequest& request) {
  Responder responder;
  {
    const std::lock_guard lock(mutex_);
    for (auto& [path, replies] : once_) {
      if (!request.isFor(path) || replies.empty()) continue;
      HttpReply reply = std::move(replies.front());
      replies.pop_front();
      return reply;
    }
    for (const auto& [path, found] : responders_) {
      if (request.isFor(path)) responder = found;
    }
  }
  return responder ? responder(request) : okReply("{}");
}

void ScriptedHttp::answer(std::string path, Responder responder) {
  const std::lock_guard lock(mutex_);
  responders_.emplace_back(std::move(path), std::move(responder));
}

void ScriptedHttp::answer(std::string path, HttpReply reply) {
  answer(std::move(path), [reply = std::move(reply)](const SentRequest&) { return reply; });
}

void ScriptedHttp::answerOnce(std::string path, HttpReply reply) {
  const std::lock_guard lock(mutex_);
  for (auto& [known, replies] : once_) {
    if (known == path) {
      replies.push_back(std::move(reply));
      return;
    }
  }
  once_.emplace_back(std::move(path), std::deque<HttpReply>{std::move(reply)});
}

void ScriptedHttp::neverAnswer() {
  const std::lock_guard lock(mutex_);
  answers_ = false;
}

void ScriptedHttp::dropAll() {
  std::vector<HttpCompletion> unanswered;
  std::vector<Task> undone;
  const std::lock_guard lock(mutex_);
  unanswered.swap(unanswered_);
  undone.swap(undone_);
}

std::vector<SentRequest> ScriptedHttp::sent() const {
  const std::lock_guard lock(mutex_);
  return sent_;
}

std::vector<SentRequest> ScriptedHttp::sentTo(std::string_view path) const {
  std::vector<SentRequest> found = sent();
  std::erase_if(found, [&](const SentRequest& request) { return !request.isFor(path); });
  return found;
}

HttpReply okReply(std::string_view body) { return statusReply(200, body); }

HttpReply statusReply(int status, std::string_view body) {
  return {std::nullopt, status, std::string(body)};
}

HttpReply refusedReply() {
  return {PlatformError{"test", 111, "connection refused", std::nullopt}, std::nullopt,
          std::nullopt};
}

}  // namespace quorvance
