#include "platform/linux/bus/screen_reader.h"

#include "platform/linux/bus/bus_query.h"

namespace quorvance {

std::optional<bool> readScreenReader(const BusPlace& sessionBus) {
  BusQuery query(sessionBus);
  const BusMessage reply = query.ask({.service = "org.a11y.Bus",
                                      .path = "/org/a11y/bus",
                                      .interface = "org.freedesktop.DBus.Properties",
                                      .member = "Get",
                                      .texts = {"org.a11y.Status", "ScreenReaderEnabled"}});
  return reply ? reply.reader().truthVariant() : std::nullopt;
}

}  // namespace quorvance
