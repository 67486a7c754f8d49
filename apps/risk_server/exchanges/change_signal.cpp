#include "apps/risk_server/exchanges/change_signal.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace risk_server {
namespace {

int newEventDescriptor() {
  const int descriptor = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  if (descriptor < 0) throw std::system_error(errno, std::generic_category(), "eventfd");
  return descriptor;
}

}  // namespace

void ChangeSignal::notify() {
  const std::lock_guard lock(mutex_);
  // It can only fail with a full counter, and then the descriptor is readable already.
  for (const int descriptor : descriptors_) (void)eventfd_write(descriptor, 1);
}

ChangeSignal::Watcher::Watcher(ChangeSignal& signal)
    : signal_(signal), descriptor_(newEventDescriptor()) {
  const std::lock_guard lock(signal_.mutex_);
  signal_.descriptors_.insert(descriptor_);
}

ChangeSignal::Watcher::~Watcher() {
  {
    const std::lock_guard lock(signal_.mutex_);
    signal_.descriptors_.erase(descriptor_);
  }
  ::close(descriptor_);
}

void ChangeSignal::Watcher::clear() const {
  eventfd_t ignored = 0;
  (void)eventfd_read(descriptor_, &ignored);
}

}  // namespace risk_server
