// Captures on disk.
#pragma once

#include <filesystem>

#include "apps/risk_server/captures/capture.h"

namespace risk_server {

inline constexpr std::uintmax_t kMaxCaptureBytes = std::uintmax_t{1} << 30;

// Throws InputError naming the file, and the line or the entry.
Capture loadCapture(const std::filesystem::path& file, const Contract& contract);

}  // namespace risk_server
