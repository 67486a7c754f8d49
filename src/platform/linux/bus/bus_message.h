#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "platform/linux/bus/sd_bus.h"

namespace quorvance {

/// Reads a message's values one after another. What is not as expected reads as absent, and then so
/// does all that follows.
class BusReader {
 public:
  BusReader(const SdBus& bus, SdBusMessage* message) : bus_(bus), message_(message) {}

  /// A text or an object path.
  std::optional<std::string> text() { return readText('s'); }
  std::optional<std::string> path() { return readText('o'); }
  std::optional<std::uint32_t> number();
  std::optional<std::int32_t> signedNumber();
  std::optional<double> real();
  std::optional<bool> truth();
  /// The texts of an array of them.
  std::vector<std::string> texts();

  // The value inside a variant; a variant of another type is skipped.
  std::optional<std::string> textVariant() { return inVariant("s", &BusReader::text); }
  std::optional<std::string> pathVariant() { return inVariant("o", &BusReader::path); }
  std::optional<std::uint32_t> numberVariant() { return inVariant("u", &BusReader::number); }
  std::optional<std::int32_t> signedVariant() { return inVariant("i", &BusReader::signedNumber); }
  std::optional<double> realVariant() { return inVariant("d", &BusReader::real); }
  std::optional<bool> truthVariant() { return inVariant("b", &BusReader::truth); }

  /// Calls `body` for each entry of an array; it reads the entry to its end. `array` is the type of
  /// an entry, for example "{sv}", and `entry` what it holds, "sv".
  template <class Body>
  void eachEntry(const char* array, const char* entry, Body&& body) {
    if (!enter('a', array)) return;
    while (enter('e', entry)) {
      body();
      leave();
    }
    leave();
  }
  void skip(const char* types);

 private:
  /// False at the end of an array too.
  bool enter(char type, const char* contents);
  void leave();
  bool read(char type, void* value);
  std::optional<std::string> readText(char type);

  template <class Value>
  std::optional<Value> inVariant(const char* contents, std::optional<Value> (BusReader::*value)()) {
    if (isBroken_ || bus_.message_enter_container(message_, 'v', contents) <= 0) {
      skip("v");
      return std::nullopt;
    }
    auto found = (this->*value)();
    leave();
    return found;
  }

  const SdBus& bus_;
  SdBusMessage* const message_;
  bool isBroken_ = false;
};

/// One call of a method.
struct BusCall {
  const char* service;
  std::string path;
  const char* interface;
  const char* member;
  std::vector<std::string> texts{};
  /// A last argument in a variant, as for setting a property.
  std::optional<std::variant<std::string, std::uint32_t>> value{};
  /// Whether the bus may start the service for it.
  bool mayStart = false;
};

class BusMessage {
 public:
  BusMessage(std::shared_ptr<const SdBus> bus, SdBusMessage* message)
      : bus_(std::move(bus)), message_(message) {}
  ~BusMessage() {
    if (message_ != nullptr) bus_->message_unref(message_);
  }
  BusMessage(BusMessage&& other) noexcept
      : bus_(std::move(other.bus_)), message_(std::exchange(other.message_, nullptr)) {}
  BusMessage& operator=(BusMessage&&) = delete;

  /// Holds no message when the call cannot be written.
  static BusMessage of(std::shared_ptr<const SdBus> bus, SdBusConnection* connection,
                       const BusCall& call);

  explicit operator bool() const { return message_ != nullptr; }
  SdBusMessage* get() const { return message_; }
  BusReader reader() const { return {*bus_, message_}; }

 private:
  std::shared_ptr<const SdBus> bus_;
  SdBusMessage* message_;
};

}  // namespace quorvance
