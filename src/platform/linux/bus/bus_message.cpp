#include "platform/linux/bus/bus_message.h"

namespace quorvance {
namespace {

bool appendArguments(const SdBus& bus, SdBusMessage* message, const BusCall& call) {
  for (const std::string& text : call.texts) {
    if (bus.message_append(message, "s", text.c_str()) < 0) return false;
  }
  if (!call.value) return true;
  if (const auto* text = std::get_if<std::string>(&*call.value)) {
    return bus.message_append(message, "v", "s", text->c_str()) >= 0;
  }
  return bus.message_append(message, "v", "u", std::get<std::uint32_t>(*call.value)) >= 0;
}

}  // namespace

bool BusReader::enter(char type, const char* contents) {
  if (isBroken_) return false;
  const int result = bus_.message_enter_container(message_, type, contents);
  if (result < 0) isBroken_ = true;
  return result > 0;
}

void BusReader::leave() {
  if (!isBroken_ && bus_.message_exit_container(message_) < 0) isBroken_ = true;
}

void BusReader::skip(const char* types) {
  if (!isBroken_ && bus_.message_skip(message_, types) < 0) isBroken_ = true;
}

bool BusReader::read(char type, void* value) {
  if (!isBroken_ && bus_.message_read_basic(message_, type, value) <= 0) isBroken_ = true;
  return !isBroken_;
}

std::optional<std::string> BusReader::readText(char type) {
  const char* text = nullptr;
  return read(type, &text) ? std::optional<std::string>(text) : std::nullopt;
}

std::optional<std::uint32_t> BusReader::number() {
  std::uint32_t value = 0;
  return read('u', &value) ? std::optional(value) : std::nullopt;
}

std::optional<std::int32_t> BusReader::signedNumber() {
  std::int32_t value = 0;
  return read('i', &value) ? std::optional(value) : std::nullopt;
}

std::optional<double> BusReader::real() {
  double value = 0;
  return read('d', &value) ? std::optional(value) : std::nullopt;
}

std::optional<bool> BusReader::truth() {
  int value = 0;
  return read('b', &value) ? std::optional(value != 0) : std::nullopt;
}

std::vector<std::string> BusReader::texts() {
  std::vector<std::string> found;
  if (!enter('a', "s")) return found;
  while (!isBroken_ && bus_.message_at_end(message_, 0) == 0) {
    found.push_back(text().value_or(""));
  }
  leave();
  return found;
}

BusMessage BusMessage::of(std::shared_ptr<const SdBus> bus, SdBusConnection* connection,
                          const BusCall& call) {
  SdBusMessage* raw = nullptr;
  const bool isMade =
      bus->message_new_method_call(connection, &raw, call.service, call.path.c_str(),
                                   call.interface, call.member) >= 0;
  BusMessage message(std::move(bus), isMade ? raw : nullptr);
  const SdBus& functions = *message.bus_;
  if (message && (functions.message_set_auto_start(raw, call.mayStart ? 1 : 0) < 0 ||
                  !appendArguments(functions, raw, call))) {
    return {message.bus_, nullptr};
  }
  return message;
}

}  // namespace quorvance
