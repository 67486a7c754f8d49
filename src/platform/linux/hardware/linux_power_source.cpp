#include "platform/linux/hardware/linux_power_source.h"

#include <charconv>
#include <string>
#include <utility>

namespace quorvance {
namespace {

constexpr std::string_view kSupplies = "/sys/class/power_supply";
constexpr int kFullPercent = 100;

// The kernel's words; "Not charging" and "Unknown" are none of the three.
constexpr std::pair<std::string_view, int> kStates[] = {
    {"Discharging", 1}, {"Charging", 2}, {"Full", 3}};
constexpr int kUnknownState = 0;

std::optional<float> levelOf(std::string_view percent) {
  int value = 0;
  const char* const end = percent.data() + percent.size();
  const auto [rest, error] = std::from_chars(percent.data(), end, value);
  if (error != std::errc() || rest != end || value < 0 || value > kFullPercent) return std::nullopt;
  return static_cast<float>(value) / static_cast<float>(kFullPercent);
}

int stateOf(std::string_view word) {
  for (const auto& [name, state] : kStates) {
    if (name == word) return state;
  }
  return kUnknownState;
}

}  // namespace

BatteryReading LinuxPowerSource::read() {
  for (const std::string& name : files_.names(kSupplies)) {
    const std::string path = std::string(kSupplies) + "/" + name;
    if (files_.fact(path + "/type") != "Battery" || files_.fact(path + "/scope") == "Device" ||
        files_.fact(path + "/present") == "0") {
      continue;
    }
    BatteryReading reading;
    reading.level = levelOf(files_.fact(path + "/capacity").value_or(""));
    reading.state = stateOf(files_.fact(path + "/status").value_or(""));
    return reading;
  }
  return {};
}

std::string LinuxPowerSource::origin(std::string_view field) const {
  if (field == "isMonitoringEnabled") return "no such switch on Linux";
  return std::string("/sys/class/power_supply: ") + (field == "level" ? "capacity" : "status");
}

}  // namespace quorvance
