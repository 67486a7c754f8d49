#include "core/trace_uploader.h"

#include <chrono>
#include <utility>

namespace quorvance {
namespace {

constexpr std::chrono::seconds kTraceUploadDelay{30};

}  // namespace

TraceUploader::TraceUploader(std::shared_ptr<Context> context,
                             std::shared_ptr<QuorvanceNetworkManager> client)
    : context_(std::move(context)), client_(std::move(client)) {}

void TraceUploader::start(std::shared_ptr<const void> owner) const {
  context_->platform.mainQueue->postAfter(kTraceUploadDelay,
                                          [this, owner = std::move(owner)] { upload(owner); });
}

// The entries become JSON off the main queue.
void TraceUploader::upload(const std::shared_ptr<const void>& owner) const {
  if (context_->tracing->isEmpty()) {
    start(owner);
    return;
  }
  context_->platform.backgroundQueue->post(
      WorkLane::completions,
      [this, owner, call = client_->prepare(Service::tracingData)] { send(call, owner); });
}

void TraceUploader::send(const PreparedCall& call, const std::shared_ptr<const void>& owner) const {
  Json entries = context_->tracing->entries();
  if (entries.empty()) {  // another loop's upload has cleared the buffer since
    start(owner);
    return;
  }
  // Room for "keys", "session" and "version".
  Json body = makeObject(4);
  putMember(body, "tracingData", std::move(entries));
  client_->send(call, std::move(body),
                {[this, owner](const ResponceObject& response) {
                   if (response.succeeded()) context_->tracing->clear();
                   start(owner);
                 },
                 [this, owner] { start(owner); }});
}

}  // namespace quorvance
