#pragma once

namespace quorvance {

/// One per process; set by the host, cleared by every payload, read by nothing.
bool sessionDataCollect() noexcept;
void setSessionDataCollect(bool on) noexcept;

}  // namespace quorvance
