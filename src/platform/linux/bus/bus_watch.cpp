#include "platform/linux/bus/bus_watch.h"

#include <algorithm>
#include <utility>

#include "base/collection.h"
#include "base/out_of_memory.h"
#include "platform/linux/bus/bus_place.h"

namespace quorvance {
namespace {

// What the library itself answers with when time is up.
constexpr const char* kNoReply = "org.freedesktop.DBus.Error.NoReply";

}  // namespace

bool BusWatch::begin(const BusPlace& place) {
  if (auto bus = openSdBusFor(place)) {
    connection_ = BusConnection::open(std::move(bus), place.address);
  }
  if (!connection_) {
    ended();
    return false;
  }
  timeout_ = place.timeout;
  readyUntil_ = BusClock::now() + timeout_;
  begun();
  return true;
}

Watch::Need BusWatch::need() {
  Need need{connection_->descriptor(), connection_->events(), connection_->deadline()};
  // The library itself would wait much longer for a bus that does not greet.
  if (!wasReady_) need.deadline = std::min(need.deadline.value_or(readyUntil_), readyUntil_);
  return need;
}

bool BusWatch::isAlive() {
  if (!connection_->process() || isUnanswered_) return false;
  if (!wasReady_) wasReady_ = connection_->isReady();
  return wasReady_ || BusClock::now() < readyUntil_;
}

// Where the host has switched collection off, that is the end of what is followed.
bool BusWatch::run() {
  if (isCollectionEnabled() && isAlive()) return true;
  connection_.reset();
  ended();
  return false;
}

// What an answer throws for want of memory must not pass through the library, which is C.
int BusWatch::handle(SdBusMessage* message, void* user, SdBusError* /*error*/) noexcept {
  auto* const handler = static_cast<Handler*>(user);
  BusWatch& watch = *handler->watch;
  const SdBus& bus = *watch.connection_->bus();
  const Answer answer = handler->isOnce ? std::move(handler->answer) : handler->answer;
  if (handler->isOnce) {
    watch.handlers_.remove_if([&](const Handler& other) { return &other == handler; });
  }
  watch.isUnanswered_ |= bus.message_is_method_error(message, kNoReply) > 0;
  hasMemoryFor([&] {
    BusReader reader(bus, message);
    answer(bus.message_is_method_error(message, nullptr) > 0 ? nullptr : &reader);
  });
  return 0;
}

void BusWatch::call(const BusCall& call, Answer answer) {
  const auto& bus = connection_->bus();
  const BusMessage request = BusMessage::of(bus, connection_->get(), call);
  handlers_.push_back({this, std::move(answer), true});
  Handler& handler = handlers_.back();
  const auto microseconds = static_cast<std::uint64_t>(std::chrono::microseconds(timeout_).count());
  if (request && bus->call_async(connection_->get(), nullptr, request.get(), &BusWatch::handle,
                                 &handler, microseconds) >= 0) {
    return;
  }
  const Answer unanswered = std::move(handler.answer);
  handlers_.pop_back();
  unanswered(nullptr);
}

void BusWatch::listen(const std::string& rule, Answer handler) {
  handlers_.push_back({this, std::move(handler), false});
  const int result = connection_->bus()->add_match_async(
      connection_->get(), nullptr, rule.c_str(), &BusWatch::handle, nullptr, &handlers_.back());
  if (result < 0) handlers_.pop_back();
}

}  // namespace quorvance
