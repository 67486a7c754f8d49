#include "platform/linux/http/wake_up_event.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace quorvance {

WakeUpEvent::~WakeUpEvent() {
  if (descriptor_ >= 0) close(descriptor_);
}

bool WakeUpEvent::open() {
  if (descriptor_ < 0) descriptor_ = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  return descriptor_ >= 0;
}

// Fails in no way that matters: a counter that is full is readable.
void WakeUpEvent::signal() const { eventfd_write(descriptor_, 1); }

void WakeUpEvent::wait(int milliseconds) const {
  pollfd event = {descriptor_, POLLIN, 0};
  poll(&event, 1, milliseconds);
}

void WakeUpEvent::reset() const {
  eventfd_t ignored = 0;
  eventfd_read(descriptor_, &ignored);
}

}  // namespace quorvance
