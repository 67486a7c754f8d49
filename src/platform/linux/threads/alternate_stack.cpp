#include "quorvance/alternate_stack.h"

#include "platform/linux/threads/signal_stack.h"

namespace quorvance {

void ensureAlternateStack() noexcept { SignalStack::ensure(); }

}  // namespace quorvance
