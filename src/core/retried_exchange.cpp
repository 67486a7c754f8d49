#include "core/retried_exchange.h"

#include <chrono>
#include <new>
#include <utility>

#include "base/collection.h"
#include "base/out_of_memory.h"

namespace quorvance {
namespace {

constexpr std::chrono::seconds kRetryDelay{10};

}  // namespace

/// One turn of an exchange, held by the work that it waits for. Lost together with that work, it
/// brings about the next turn.
class RetriedExchange::Attempt {
 public:
  Attempt(const RetriedExchange& exchange, std::shared_ptr<const void> owner)
      : exchange_(exchange), owner_(std::move(owner)) {}
  ~Attempt() {
    if (!isOver_) exchange_.retry_->start(std::move(owner_), kRetryDelay);
  }
  Attempt(const Attempt&) = delete;
  Attempt& operator=(const Attempt&) = delete;

  const std::shared_ptr<const void>& owner() const { return owner_; }
  void end() { isOver_ = true; }

 private:
  const RetriedExchange& exchange_;
  std::shared_ptr<const void> owner_;
  bool isOver_ = false;
};

RetriedExchange::RetriedExchange(std::shared_ptr<Context> context,
                                 std::shared_ptr<QuorvanceNetworkManager> client, Rules rules)
    : context_(std::move(context)),
      client_(std::move(client)),
      rules_(std::move(rules)),
      retry_(context_->platform.mainQueue->prepare(
          [this](const PreparedTask::Owner& owner) { continueIfNeeded(owner); })) {
  if (!retry_) throw std::bad_alloc();
}

void RetriedExchange::ask(const std::shared_ptr<const void>& owner,
                          const PendingWork::Mark& cause) const noexcept {
  ask(owner, [&] {
    CallDraft draft = client_->draft(rules_.service);
    if (cause) draft.call.pending = cause;
    return draft;
  });
}

void RetriedExchange::ask(const std::shared_ptr<const void>& owner,
                          const Settle& settle) const noexcept {
  std::shared_ptr<Attempt> attempt;
  if (!hasMemoryFor([&] { attempt = std::make_shared<Attempt>(*this, owner); })) {
    return retry_->start(owner, kRetryDelay);
  }
  hasMemoryFor([&] { begin(attempt, settle); });
}

// While collection is off nothing is even read for the body; the attempt is lost, so that the next
// one finds out when it is on again.
void RetriedExchange::begin(const std::shared_ptr<Attempt>& attempt, const Settle& settle) const {
  if (!isCollectionEnabled()) return;
  if (rules_.begin) rules_.begin();
  const OperationTrace trace(*context_->tracing, rules_.traceName);
  rules_.whenReady(withinMemory([this, attempt, kept = trace.continuation(),
                                 erasures = context_->state->erasures(), draft = settle()] {
    const PreparedCall call = client_->prepare(draft);
    const auto take = [this, attempt, kept, session = call.session, pending = call.pending,
                       erasures](const ResponceObject& response) mutable {
      // What was erased meanwhile must not come back with an answer.
      const bool isTaken = erasures == context_->state->erasures() &&
                           rules_.take({response, session, kept, pending});
      attempt->end();
      if (!isTaken) askLater(attempt->owner());
    };
    client_->send(call, rules_.makeBody(), {take, [attempt] { attempt->end(); }, nullptr});
  }));
}

void RetriedExchange::askLater(const std::shared_ptr<const void>& owner) const noexcept {
  std::shared_ptr<Attempt> attempt;
  if (!hasMemoryFor([&] { attempt = std::make_shared<Attempt>(*this, owner); })) {
    return retry_->start(owner, kRetryDelay);
  }
  hasMemoryFor([&] {
    context_->platform.mainQueue->postAfter(kRetryDelay, [this, attempt] {
      attempt->end();
      continueIfNeeded(attempt->owner());
    });
  });
}

void RetriedExchange::continueIfNeeded(const std::shared_ptr<const void>& owner) const {
  bool isNeeded = true;
  hasMemoryFor([&] { isNeeded = rules_.isNeeded(); });
  if (!isNeeded) return;
  ask(owner, [this] {
    CallDraft draft = client_->draft(rules_.service);
    draft.call.pending = {};
    return draft;
  });
}

}  // namespace quorvance
