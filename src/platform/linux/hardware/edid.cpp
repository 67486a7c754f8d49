#include "platform/linux/hardware/edid.h"

#include <cstddef>
#include <numeric>

namespace quorvance {
namespace {

constexpr std::size_t kBaseBlockBytes = 128;
constexpr std::string_view kHeader("\x00\xff\xff\xff\xff\xff\xff\x00", 8);
constexpr std::size_t kWidthInCentimetres = 21;
constexpr std::size_t kHeightInCentimetres = 22;
constexpr std::size_t kPreferredTiming = 54;

unsigned byteAt(std::string_view bytes, std::size_t index) {
  return static_cast<unsigned char>(bytes[index]);
}

bool isBaseBlock(std::string_view edid) {
  if (edid.size() < kBaseBlockBytes || !edid.starts_with(kHeader)) return false;
  const std::string_view block = edid.substr(0, kBaseBlockBytes);
  const unsigned sum = std::accumulate(
      block.begin(), block.end(), 0U,
      [](unsigned total, char byte) { return total + static_cast<unsigned char>(byte); });
  return sum % 256 == 0;
}

std::optional<PhysicalSize> sizeOf(unsigned width, unsigned height, double unit) {
  if (width == 0 || height == 0) return std::nullopt;
  return PhysicalSize{width * unit, height * unit};
}

}  // namespace

std::optional<PhysicalSize> physicalSizeOf(std::string_view edid) {
  if (!isBaseBlock(edid)) return std::nullopt;
  const std::string_view timing = edid.substr(kPreferredTiming);
  // A descriptor without a pixel clock is no timing.
  if (byteAt(timing, 0) != 0 || byteAt(timing, 1) != 0) {
    const unsigned high = byteAt(timing, 14);
    const auto size = sizeOf(byteAt(timing, 12) | (high & 0xf0) << 4,
                             byteAt(timing, 13) | (high & 0x0f) << 8, 1.0);
    if (size) return size;
  }
  return sizeOf(byteAt(edid, kWidthInCentimetres), byteAt(edid, kHeightInCentimetres), 10.0);
}

}  // namespace quorvance
