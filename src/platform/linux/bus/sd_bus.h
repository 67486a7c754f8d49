#pragma once

// What services on the D-Bus tell: modem, place, permissions, screen reader. No call starts a
// service unless the host allows it, and none waits in a host call. Start reading at bus_query.h
// for single questions, at bus_watch.h for what is followed in the background.

#include <cstdint>
#include <memory>
#include <span>

namespace quorvance {

/// systemd's library, and those with the same functions on systems without it.
inline constexpr const char* kSdBusNames[] = {"libsystemd.so.0", "libelogind.so.0", "libbasu.so.0"};

struct SdBusConnection;
struct SdBusMessage;
struct SdBusSlot;
struct SdBusError {
  const char* name;
  const char* message;
  int needsFree;
};
using SdBusHandler = int (*)(SdBusMessage* message, void* user, SdBusError* error);

/// The part of the documented interface of sd-bus(3) that is used here: each member is the function
/// of that name after "sd_bus_". Immutable.
struct SdBus {
  int (*newBus)(SdBusConnection**) = nullptr;
  int (*set_address)(SdBusConnection*, const char*) = nullptr;
  int (*set_bus_client)(SdBusConnection*, int) = nullptr;
  int (*start)(SdBusConnection*) = nullptr;
  int (*is_ready)(SdBusConnection*) = nullptr;
  int (*process)(SdBusConnection*, SdBusMessage**) = nullptr;
  int (*get_fd)(SdBusConnection*) = nullptr;
  int (*get_events)(SdBusConnection*) = nullptr;
  int (*get_timeout)(SdBusConnection*, std::uint64_t*) = nullptr;
  void (*close)(SdBusConnection*) = nullptr;
  SdBusConnection* (*unref)(SdBusConnection*) = nullptr;
  int (*add_match_async)(SdBusConnection*, SdBusSlot**, const char*, SdBusHandler, SdBusHandler,
                         void*) = nullptr;
  int (*call)(SdBusConnection*, SdBusMessage*, std::uint64_t, SdBusError*,
              SdBusMessage**) = nullptr;
  int (*call_async)(SdBusConnection*, SdBusSlot**, SdBusMessage*, SdBusHandler, void*,
                    std::uint64_t) = nullptr;
  int (*message_new_method_call)(SdBusConnection*, SdBusMessage**, const char*, const char*,
                                 const char*, const char*) = nullptr;
  int (*message_set_auto_start)(SdBusMessage*, int) = nullptr;
  int (*message_append)(SdBusMessage*, const char*, ...) = nullptr;
  int (*message_is_method_error)(SdBusMessage*, const char*) = nullptr;
  int (*message_enter_container)(SdBusMessage*, char, const char*) = nullptr;
  int (*message_exit_container)(SdBusMessage*) = nullptr;
  int (*message_read_basic)(SdBusMessage*, char, void*) = nullptr;
  int (*message_skip)(SdBusMessage*, const char*) = nullptr;
  int (*message_at_end)(SdBusMessage*, int) = nullptr;
  SdBusMessage* (*message_unref)(SdBusMessage*) = nullptr;
};

/// Null when none of the libraries is there. Runs a library's constructors: never in a host call.
std::shared_ptr<const SdBus> openSdBus(std::span<const char* const> names);

}  // namespace quorvance
