#include "core/trace_uploader.h"

#include <chrono>
#include <new>
#include <utility>

#include "base/collection.h"
#include "base/out_of_memory.h"

namespace quorvance {
namespace {

constexpr std::chrono::seconds kTraceUploadDelay{30};

}  // namespace

/// One loop, held by the work that its round waits for. Lost together with that work, it is begun
/// anew.
class TraceUploader::Loop {
 public:
  Loop(TraceUploader& uploader, std::shared_ptr<const void> owner)
      : uploader_(uploader), owner_(std::move(owner)) {}
  ~Loop() { uploader_.resumeLost(owner_); }
  Loop(const Loop&) = delete;
  Loop& operator=(const Loop&) = delete;

 private:
  TraceUploader& uploader_;
  const std::shared_ptr<const void> owner_;
};

TraceUploader::TraceUploader(std::shared_ptr<Context> context,
                             std::shared_ptr<QuorvanceNetworkManager> client)
    : context_(std::move(context)),
      client_(std::move(client)),
      resumption_(context_->platform.mainQueue->prepare(
          [this](const PreparedTask::Owner& owner) { resume(owner); })) {
  if (!resumption_) throw std::bad_alloc();
}

void TraceUploader::start(const std::shared_ptr<const void>& owner) noexcept {
  begin(owner, &TraceUploader::scheduleRound);
}

// A loop that ends without having gone on counts as lost itself.
void TraceUploader::begin(const std::shared_ptr<const void>& owner,
                          void (TraceUploader::*step)(const SharedLoop&)) noexcept {
  SharedLoop loop;
  if (!hasMemoryFor([&] { loop = std::make_shared<Loop>(*this, owner); })) return resumeLost(owner);
  hasMemoryFor([&] { (this->*step)(loop); });
}

void TraceUploader::resumeLost(const std::shared_ptr<const void>& owner) noexcept {
  if (isStopped_) return;
  ++lostLoops_;
  resumption_->start(owner, kTraceUploadDelay);
}

void TraceUploader::resume(const std::shared_ptr<const void>& owner) noexcept {
  // Their wait is over.
  for (std::size_t lost = lostLoops_.exchange(0); lost > 0; --lost) {
    begin(owner, &TraceUploader::upload);
  }
}

void TraceUploader::scheduleRound(const SharedLoop& loop) {
  if (isStopped_) return;
  context_->platform.mainQueue->postAfter(kTraceUploadDelay,
                                          withinMemory([this, loop] { upload(loop); }));
}

PreparedCall TraceUploader::prepareRound() {
  PreparedCall call = client_->prepare(Service::tracingData);
  call.pending = {};
  return call;
}

// The entries become JSON off the main queue.
void TraceUploader::upload(const SharedLoop& loop) {
  if (isStopped_) return;
  if (context_->tracing->isEmpty() || !isCollectionEnabled()) return scheduleRound(loop);
  context_->platform.backgroundQueue->post(
      WorkLane::completions,
      withinMemory([this, loop, call = prepareRound()] { send(call, loop); }));
}

void TraceUploader::send(const PreparedCall& call, const SharedLoop& loop) {
  Json entries = context_->tracing->entries();
  const JsonDiscarder discarder(entries);
  // Another loop's upload may have cleared the buffer since.
  if (entries.empty()) return scheduleRound(loop);
  // Room for "keys", "session" and "version".
  Json body = makeObject(4);
  const JsonDiscarder bodyDiscarder(body);
  putMember(body, "tracingData", std::move(entries));
  client_->send(call, std::move(body),
                {[this, loop](const ResponceObject& response) {
                   if (response.succeeded()) context_->tracing->clear();
                   scheduleRound(loop);
                 },
                 [this, loop] { scheduleRound(loop); }});
}

}  // namespace quorvance
