#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "platform/linux/bus/bus_message.h"

namespace quorvance {

using BusClock = std::chrono::steady_clock;

/// A connection to one bus. One thread at a time; nothing waits for the other end but `call`.
class BusConnection {
 public:
  /// Null when there is nobody at the address.
  static std::unique_ptr<BusConnection> open(std::shared_ptr<const SdBus> bus,
                                             const std::string& address);
  ~BusConnection();
  BusConnection(const BusConnection&) = delete;
  BusConnection& operator=(const BusConnection&) = delete;

  const std::shared_ptr<const SdBus>& bus() const { return bus_; }
  SdBusConnection* get() const { return connection_; }

  /// The bus has greeted.
  bool isReady() const { return bus_->is_ready(connection_) > 0; }
  int descriptor() const { return bus_->get_fd(connection_); }
  short events() const { return static_cast<short>(bus_->get_events(connection_)); }
  /// When it wants to be processed though nothing came.
  std::optional<BusClock::time_point> deadline() const;
  /// Does what can be done without waiting; false when the connection is dead.
  bool process();
  /// Waits for the greeting and then for the answer, both until `deadline`. No message for an error
  /// and for no answer.
  BusMessage call(const BusCall& call, BusClock::time_point deadline);

 private:
  BusConnection(std::shared_ptr<const SdBus> bus, SdBusConnection* connection)
      : bus_(std::move(bus)), connection_(connection) {}
  bool waitUntilReady(BusClock::time_point deadline);

  const std::shared_ptr<const SdBus> bus_;
  SdBusConnection* const connection_;
};

}  // namespace quorvance
