#include "platform/linux/facts/chassis_kind.h"

#include <algorithm>
#include <charconv>
#include <iterator>

namespace quorvance {
namespace {

struct ChassisName {
  int type;
  std::string_view kind;
};

// The words are those of machine-info(5).
constexpr ChassisName kChassisNames[] = {
    {3, "desktop"},       // desktop
    {4, "desktop"},       // low-profile desktop
    {5, "desktop"},       // pizza box
    {6, "desktop"},       // mini tower
    {7, "desktop"},       // tower
    {8, "laptop"},        // portable
    {9, "laptop"},        // laptop
    {10, "laptop"},       // notebook
    {11, "handset"},      // hand held
    {13, "desktop"},      // all in one
    {14, "laptop"},       // sub-notebook
    {15, "desktop"},      // space-saving
    {16, "desktop"},      // lunch box
    {17, "server"},       // main server chassis
    {23, "server"},       // rack mount chassis
    {24, "desktop"},      // sealed-case PC
    {25, "server"},       // multi-system chassis
    {28, "server"},       // blade
    {29, "server"},       // blade enclosure
    {30, "tablet"},       // tablet
    {31, "convertible"},  // convertible
    {32, "convertible"},  // detachable
    {33, "embedded"},     // IoT gateway
    {34, "embedded"},     // embedded PC
    {35, "desktop"},      // mini PC
    {36, "desktop"},      // stick PC
};

}  // namespace

std::optional<std::string> chassisKind(std::string_view chassisType) {
  int type = 0;
  const char* const end = chassisType.data() + chassisType.size();
  const auto [rest, error] = std::from_chars(chassisType.data(), end, type);
  if (error != std::errc() || rest != end) return std::nullopt;
  const auto* const found =
      std::find_if(std::begin(kChassisNames), std::end(kChassisNames),
                   [&](const ChassisName& chassis) { return chassis.type == type; });
  if (found == std::end(kChassisNames)) return std::nullopt;
  return std::string(found->kind);
}

}  // namespace quorvance
