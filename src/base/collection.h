#pragma once

namespace quorvance {

/// The process-wide switch of the host's consent; any thread, and signal handlers. While it is off
/// nothing is gathered, stored or sent: whoever gathers, stores or sends asks here.
bool isCollectionEnabled() noexcept;
void setCollectionEnabled(bool on) noexcept;

}  // namespace quorvance
