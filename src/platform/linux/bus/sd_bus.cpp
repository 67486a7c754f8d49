#include "platform/linux/bus/sd_bus.h"

#include "platform/linux/facts/dynamic_library.h"

namespace quorvance {
namespace {

bool bindConnection(SdBus& bus, const DynamicLibrary& library) {
  return library.bind(bus.newBus, "sd_bus_new") &&
         library.bind(bus.set_address, "sd_bus_set_address") &&
         library.bind(bus.set_bus_client, "sd_bus_set_bus_client") &&
         library.bind(bus.start, "sd_bus_start") && library.bind(bus.is_ready, "sd_bus_is_ready") &&
         library.bind(bus.process, "sd_bus_process") && library.bind(bus.get_fd, "sd_bus_get_fd") &&
         library.bind(bus.get_events, "sd_bus_get_events") &&
         library.bind(bus.get_timeout, "sd_bus_get_timeout") &&
         library.bind(bus.close, "sd_bus_close") && library.bind(bus.unref, "sd_bus_unref") &&
         library.bind(bus.add_match_async, "sd_bus_add_match_async") &&
         library.bind(bus.call, "sd_bus_call") && library.bind(bus.call_async, "sd_bus_call_async");
}

bool bindMessages(SdBus& bus, const DynamicLibrary& library) {
  return library.bind(bus.message_new_method_call, "sd_bus_message_new_method_call") &&
         library.bind(bus.message_set_auto_start, "sd_bus_message_set_auto_start") &&
         library.bind(bus.message_append, "sd_bus_message_append") &&
         library.bind(bus.message_is_method_error, "sd_bus_message_is_method_error") &&
         library.bind(bus.message_enter_container, "sd_bus_message_enter_container") &&
         library.bind(bus.message_exit_container, "sd_bus_message_exit_container") &&
         library.bind(bus.message_read_basic, "sd_bus_message_read_basic") &&
         library.bind(bus.message_skip, "sd_bus_message_skip") &&
         library.bind(bus.message_at_end, "sd_bus_message_at_end") &&
         library.bind(bus.message_unref, "sd_bus_message_unref");
}

}  // namespace

std::shared_ptr<const SdBus> openSdBus(std::span<const char* const> names) {
  const DynamicLibrary library = DynamicLibrary::open(names);
  SdBus bus;
  const bool isBound = bindConnection(bus, library) && bindMessages(bus, library);
  return isBound ? std::make_shared<const SdBus>(bus) : nullptr;
}

}  // namespace quorvance
