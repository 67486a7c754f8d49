#pragma once

#include <memory>

#include "platform/linux/bus/bus_connection.h"
#include "platform/linux/bus/bus_place.h"

namespace quorvance {

/// A few questions to one bus, all of them in its timeout from its making on. Fact lane only: it
/// waits.
class BusQuery {
 public:
  explicit BusQuery(const BusPlace& place)
      : deadline_(BusClock::now() + place.timeout),
        bus_(openSdBusFor(place)),
        connection_(bus_ ? BusConnection::open(bus_, place.address) : nullptr) {}

  /// No message for an error, for no answer in time, and without a bus. Starts no service.
  BusMessage ask(const BusCall& call) {
    return connection_ ? connection_->call(call, deadline_) : BusMessage(bus_, nullptr);
  }

 private:
  const BusClock::time_point deadline_;
  const std::shared_ptr<const SdBus> bus_;
  const std::unique_ptr<BusConnection> connection_;
};

}  // namespace quorvance
