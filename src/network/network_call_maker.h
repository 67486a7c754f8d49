#pragma once

#include <concepts>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "base/json.h"
#include "diagnostics/delivery_ledger.h"
#include "diagnostics/exception_logger.h"
#include "diagnostics/report_keeper.h"
#include "diagnostics/tracing_manager.h"
#include "network/redaction.h"
#include "network/responce_object.h"
#include "quorvance/platform/http.h"
#include "quorvance/platform/queues.h"
#include "state/inner_quorvance_data.h"
#include "state/system_texts.h"

namespace quorvance {

/// What waits for a call: exactly one of the three runs, once, however many copies there are.
/// `done` runs on the background queue; what it finds no memory for makes the call a lost one.
/// `dropped` runs when the call ends without an answer by contract (a URL that does not parse, a
/// body that cannot be JSON), `lost` when the work that held it is thrown away, for want of memory
/// above all. Those two run wherever that happens, must only hand work on, and need no memory.
class ReplyHandler {
 public:
  using Done = std::function<void(ResponceObject&)>;
  using Dropped = std::function<void()>;

  /// Nobody waits.
  ReplyHandler() = default;
  /// Nobody is told when there is no answer.
  template <class Callable>
  requires std::constructible_from<Done, Callable> ReplyHandler(Callable done)
      : ReplyHandler(Done(std::move(done)), nullptr) {}
  /// A lost call is a dropped one.
  ReplyHandler(Done done, const Dropped& dropped)
      : ReplyHandler(std::move(done), dropped, dropped) {}
  ReplyHandler(Done done, Dropped dropped, Dropped lost);

  void complete(ResponceObject& response) const;
  void drop() const;

 private:
  struct Waiting;
  std::shared_ptr<Waiting> waiting_;
};

/// What every call uses.
struct CallServices {
  std::shared_ptr<HttpSession> http;
  std::shared_ptr<BackgroundQueue> backgroundQueue;
  std::shared_ptr<InnerQuorvanceData> state;
  std::shared_ptr<SystemTexts> texts;
  std::shared_ptr<TracingManager> tracing;
  std::shared_ptr<ExceptionLogger> exceptions;
  std::shared_ptr<ReportKeeper> reports;
  std::shared_ptr<DeliveryLedger> ledger;
  /// Null without a hook of the host's.
  std::shared_ptr<Redaction> redaction = nullptr;
};

/// What the ledger is told of a call.
struct CallEntry {
  /// A constant.
  std::string_view service;
  /// Ends with the call, whatever becomes of it; empty for a call that nobody has to wait for.
  PendingWork::Mark pending;
};

/// The one place that talks HTTP: posts a JSON body and says what came back. Never throws, never
/// retries, keeps no state of its own. While collection is off every call that has not been handed
/// to the session is lost.
///
/// Where the host has a hook, it sees each body first: on the background queue, in the order of the
/// calls. A call lives on two threads. On the session's: "version" is added, the time-out read, the
/// start traced, the body serialised and sent. On the background queue: the reply is read and
/// turned into an outcome, then report, debug print, end trace, and the completion last of all.
class NetworkCallMaker : public std::enable_shared_from_this<NetworkCallMaker> {
 public:
  explicit NetworkCallMaker(CallServices services);

  /// Returns at once; any thread. `reportErrors` absent means true. `alongside` runs on the
  /// session's thread after the request has been sent, or could not be: what else a host call wants
  /// of other threads costs it no further wake-up.
  void requestFromServer(std::string url, Json params, std::string requestId,
                         std::optional<bool> reportErrors, ReplyHandler handler,
                         Task alongside = nullptr, CallEntry entry = {});

  /// For a call that is about to be made.
  PendingWork::Mark beginPending() const { return services_->ledger->pending()->begin(); }

 private:
  const std::shared_ptr<const CallServices> services_;
};

}  // namespace quorvance
