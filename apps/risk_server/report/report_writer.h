// A capture as one HTML file that needs no server: the console's own page with the exchanges in it.
#pragma once

#include <cstddef>
#include <string>

#include "apps/risk_server/captures/capture.h"
#include "apps/risk_server/masking/masker.h"

namespace risk_server {

// The newest exchanges up to so many bytes; the report says how many were left out.
inline constexpr std::size_t kMaxReportBytes = std::size_t{20} << 20;

// `name` is shown as where it comes from. Without a masker it holds what was sent.
//
// The page's modules stand in an import map of data URLs, and the policy allows these very texts by
// their hashes and nothing else: no address is asked for anything.
std::string reportOf(const Capture& capture, const std::string& name, const Masker* masker,
                     std::size_t mostBytes = kMaxReportBytes);

}  // namespace risk_server
