#pragma once

#include <functional>
#include <memory>
#include <string_view>

#include "core/context.h"
#include "diagnostics/operation_trace.h"
#include "network/quorvance_network_manager.h"

namespace quorvance {

/// An exchange with the server that begins again after each failure for as long as its answer is
/// needed. Any thread; it has no state of its own.
///
/// Its life: asked, it settles its call under the identity and the session of now, sends it once
/// its body can be made, and hands the answer over. 10 s after a failure, on the main queue, it is
/// asked whether the answer is still needed; if so, everything begins anew. There is no limit and
/// no cancellation, and asks may overlap. A call that ends without an answer by contract ends it.
/// Work that is lost on the way, for want of memory above all, is a failure too. What was asked for
/// is pending until its first answer; what is asked again is not.
class RetriedExchange {
 public:
  struct Answer {
    const ResponceObject& response;
    /// That of the call.
    const Session& session;
    TraceContinuation& trace;
    /// Empty where the exchange was asked again.
    const PendingWork::Mark& pending;
  };
  /// What one exchange has of its own.
  struct Rules {
    Service service;
    /// Of its trace entry; empty for none.
    std::string_view traceName;
    /// What happens at once when a turn begins; empty for nothing.
    std::function<void()> begin = {};
    /// Runs the task once the body can be made.
    std::function<void(Task)> whenReady;
    std::function<Json()> makeBody;
    /// False for a failure.
    std::function<bool(const Answer&)> take;
    std::function<bool()> isNeeded;
  };

  RetriedExchange(std::shared_ptr<Context> context, std::shared_ptr<QuorvanceNetworkManager> client,
                  Rules rules);

  // Nothing is thrown. `owner` holds this exchange and all that its rules use; the work holds it
  // until it has run.
  /// `cause` is the work that this follows from, if any is pending.
  void ask(const std::shared_ptr<const void>& owner,
           const PendingWork::Mark& cause = {}) const noexcept;
  /// In 10 s, if the answer is needed then.
  void askLater(const std::shared_ptr<const void>& owner) const noexcept;

 private:
  class Attempt;
  /// Settles the call of a turn.
  using Settle = std::function<CallDraft()>;
  void ask(const std::shared_ptr<const void>& owner, const Settle& settle) const noexcept;
  void begin(const std::shared_ptr<Attempt>& attempt, const Settle& settle) const;
  void continueIfNeeded(const std::shared_ptr<const void>& owner) const;

  const std::shared_ptr<Context> context_;
  const std::shared_ptr<QuorvanceNetworkManager> client_;
  const Rules rules_;
  // For what is lost: needs no memory.
  const std::shared_ptr<PreparedTask> retry_;
};

}  // namespace quorvance
