#pragma once

#include <optional>
#include <string_view>

namespace quorvance {

struct PhysicalSize {
  double widthMillimetres = 0;
  double heightMillimetres = 0;
};

/// The size of the image area that the base block of an EDID tells (VESA E-EDID 1.4): of the
/// preferred timing, else the whole centimetres of the block's head. Absent for what is no EDID or
/// has a wrong checksum, and for displays without a size of their own, such as projectors.
std::optional<PhysicalSize> physicalSizeOf(std::string_view edid);

}  // namespace quorvance
