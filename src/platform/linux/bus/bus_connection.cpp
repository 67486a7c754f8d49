#include "platform/linux/bus/bus_connection.h"

#include <poll.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <utility>

namespace quorvance {
namespace {

/// Rounded up, and never 0, which the library would take for its own default.
std::uint64_t microsecondsUntil(BusClock::time_point deadline) {
  const auto left = std::chrono::ceil<std::chrono::microseconds>(deadline - BusClock::now());
  return static_cast<std::uint64_t>(std::max<std::int64_t>(left.count(), 1));
}

}  // namespace

std::unique_ptr<BusConnection> BusConnection::open(std::shared_ptr<const SdBus> bus,
                                                   const std::string& address) {
  SdBusConnection* raw = nullptr;
  if (address.empty() || bus->newBus(&raw) < 0) return nullptr;
  std::unique_ptr<BusConnection> connection(new BusConnection(std::move(bus), raw));
  const SdBus& functions = *connection->bus_;
  const bool isStarted = functions.set_address(raw, address.c_str()) >= 0 &&
                         functions.set_bus_client(raw, 1) >= 0 && functions.start(raw) >= 0;
  return isStarted ? std::move(connection) : nullptr;
}

// Without a flush, which would wait.
BusConnection::~BusConnection() {
  bus_->close(connection_);
  bus_->unref(connection_);
}

std::optional<BusClock::time_point> BusConnection::deadline() const {
  std::uint64_t microseconds = 0;
  constexpr std::uint64_t kNever = std::numeric_limits<std::uint64_t>::max();
  if (bus_->get_timeout(connection_, &microseconds) < 0 || microseconds == kNever) {
    return std::nullopt;
  }
  // On the clock that steady_clock is.
  return BusClock::time_point(std::chrono::microseconds(microseconds));
}

bool BusConnection::process() {
  int result = 1;
  while (result > 0) result = bus_->process(connection_, nullptr);
  return result == 0;
}

bool BusConnection::waitUntilReady(BusClock::time_point deadline) {
  for (;;) {
    if (!process()) return false;
    if (isReady()) return true;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - BusClock::now());
    if (left.count() <= 0) return false;
    pollfd polled = {descriptor(), events(), 0};
    poll(&polled, 1, static_cast<int>(left.count()));
  }
}

BusMessage BusConnection::call(const BusCall& call, BusClock::time_point deadline) {
  SdBusMessage* reply = nullptr;
  const BusMessage request = BusMessage::of(bus_, connection_, call);
  const bool isAnswered =
      request && waitUntilReady(deadline) &&
      bus_->call(connection_, request.get(), microsecondsUntil(deadline), nullptr, &reply) >= 0;
  return {bus_, isAnswered ? reply : nullptr};
}

}  // namespace quorvance
