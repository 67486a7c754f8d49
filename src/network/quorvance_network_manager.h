#pragma once

#include <memory>
#include <optional>
#include <string>

#include "network/client_identity.h"
#include "network/network_call_maker.h"
#include "network/service.h"
#include "quorvance/check_point_type.h"
#include "state/keys_data.h"

namespace quorvance {

/// Whose calls these are at one moment.
struct Caller {
  ClientIdentity::Values identity;
  Session session;
};

/// A call whose identity is settled and whose body may come later.
struct PreparedCall {
  Service service = Service::getSdkConfiguration;
  std::string url;
  std::string requestId;
  KeysData keys;
  Session session;
  /// Pending from its settling on; cleared for a call that nobody has to wait for.
  PendingWork::Mark pending = {};
};

/// A call that waits for its body, and for what may have to be read from the disk.
struct CallDraft {
  PreparedCall call;
  SessionMark session;
};

/// The client of the service paths. Joins URL and path by plain concatenation (the URL must end in
/// "/"), adds "keys" and "session" to every body and gives every call a fresh request identifier.
/// Any thread.
class QuorvanceNetworkManager {
 public:
  QuorvanceNetworkManager(std::shared_ptr<InnerQuorvanceData> state,
                          std::shared_ptr<NetworkCallMaker> callMaker);

  /// Whose calls these are; asked anew for every call.
  ClientIdentity& identity() { return identity_; }

  /// The identity and the session of now.
  Caller callerOfNow();

  /// Settles a call under the identity and the session of now: every call begins here, so that none
  /// can forget it. A request identifier that is given is the call's; otherwise it gets a fresh
  /// one.
  PreparedCall prepare(Service service, std::optional<CheckPointType> checkPoint = std::nullopt,
                       std::optional<std::string> requestId = std::nullopt);
  /// As above, for a call that is prepared later: reads nothing but the stored state.
  CallDraft draft(Service service);
  /// On a thread that may read the disk.
  PreparedCall prepare(CallDraft draft) const;
  /// As prepare(), under those of an earlier moment.
  PreparedCall prepareFor(Caller caller, Service service) const;

  /// Sends the body, an object, under the call's identity; what it holds under "keys" and "session"
  /// is replaced. For `alongside` see NetworkCallMaker.
  void send(const PreparedCall& call, Json body, ReplyHandler handler, Task alongside = nullptr);

  /// Sends the body as it stands: no "keys", no "session". The request identifier is the vendor
  /// identifier.
  void sendImage(Json body, ReplyHandler handler);

 private:
  PreparedCall prepare(Caller caller, Service service, std::optional<CheckPointType> checkPoint,
                       std::optional<std::string> requestId) const;
  static PreparedCall callOf(Caller caller, Service service,
                             std::optional<CheckPointType> checkPoint,
                             std::optional<std::string> requestId);

  const std::shared_ptr<InnerQuorvanceData> state_;
  const std::shared_ptr<NetworkCallMaker> callMaker_;
  ClientIdentity identity_;
};

}  // namespace quorvance
