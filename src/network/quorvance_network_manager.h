#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "network/network_call_maker.h"
#include "network/service.h"
#include "quorvance/check_point_type.h"
#include "state/keys_data.h"

namespace quorvance {

/// Whose calls these are.
struct ClientIdentity {
  std::string deviceId;
  std::string userId;
  /// Absent keeps the URL that the client has.
  std::optional<std::string> serverUrl;
};

/// A call whose identity is settled and whose body may come later.
struct PreparedCall {
  Service service = Service::getSdkConfiguration;
  std::string url;
  std::string requestId;
  KeysData keys;
  Session session;
};

/// The client of the service paths. Joins URL and path by plain concatenation (the URL must end in
/// "/"), adds "keys" and "session" to every body and gives every call a fresh request identifier.
/// Any thread; guarded by one mutex.
class QuorvanceNetworkManager {
 public:
  QuorvanceNetworkManager(std::shared_ptr<InnerQuorvanceData> state,
                          std::shared_ptr<NetworkCallMaker> callMaker);

  /// Takes the identity over and settles a call under it. A request identifier that is given is
  /// the call's; otherwise it gets a fresh one.
  PreparedCall prepare(const ClientIdentity& identity, Service service,
                       std::optional<CheckPointType> checkPoint = std::nullopt,
                       std::optional<std::string> requestId = std::nullopt);

  /// Sends the body, an object, under the call's identity; what it holds under "keys" and "session"
  /// is replaced.
  void send(const PreparedCall& call, Json body, std::shared_ptr<CallCompletion> completion);

  /// Sends the body as it stands: no "keys", no "session". The request identifier is the vendor
  /// identifier.
  void sendImage(const ClientIdentity& identity, Json body,
                 std::shared_ptr<CallCompletion> completion);

 private:
  std::string takeIdentity(const ClientIdentity& identity);

  const std::shared_ptr<InnerQuorvanceData> state_;
  const std::shared_ptr<NetworkCallMaker> callMaker_;
  std::mutex mutex_;
  std::string deviceId_;
  std::string userId_;
  std::string serverURL_;
};

}  // namespace quorvance
