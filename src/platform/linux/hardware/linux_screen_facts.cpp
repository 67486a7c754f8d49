#include "platform/linux/hardware/linux_screen_facts.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <optional>
#include <string>
#include <tuple>

#include "platform/linux/hardware/edid.h"

namespace quorvance {
namespace {

constexpr std::string_view kConnectors = "/sys/class/drm";
// The names of connectors of built-in panels, after "card0-".
constexpr std::string_view kBuiltIn[] = {"eDP-", "LVDS-", "DSI-", "DPI-"};
constexpr int kMaxPixels = 65535;

// Virtual displays report absurd physical sizes; what lies outside is none.
constexpr double kMinDotsPerInch = 40;
constexpr double kMaxDotsPerInch = 1000;
constexpr double kMillimetresPerInch = 25.4;
// From this density on desktops draw everything twice as large unless told otherwise.
constexpr double kDenseDotsPerInch = 192;

struct Mode {
  int width = 0;
  int height = 0;
};

struct Connector {
  std::string path{};
  bool isDark = false;
  bool isExternal = false;
  Mode mode{};

  auto rank() const { return std::tie(isDark, isExternal, path); }
};

/// "1920x1080", and what follows ("i" for interlaced).
std::optional<Mode> modeNamed(std::string_view name) {
  Mode mode{};
  const char* const end = name.data() + name.size();
  const auto [cross, widthError] = std::from_chars(name.data(), end, mode.width);
  if (widthError != std::errc() || cross == end || *cross != 'x') return std::nullopt;
  if (std::from_chars(cross + 1, end, mode.height).ec != std::errc()) return std::nullopt;
  const bool isSize =
      mode.width > 0 && mode.width <= kMaxPixels && mode.height > 0 && mode.height <= kMaxPixels;
  return isSize ? std::optional(mode) : std::nullopt;
}

bool isBuiltIn(std::string_view connector) {
  const std::string_view type = connector.substr(connector.find('-') + 1);
  return std::any_of(std::begin(kBuiltIn), std::end(kBuiltIn),
                     [&](std::string_view name) { return type.starts_with(name); });
}

std::optional<Connector> connectorNamed(const RootFiles& files, const std::string& name) {
  if (!name.starts_with("card") || name.find('-') == std::string::npos) return std::nullopt;
  Connector connector{.path = std::string(kConnectors) + "/" + name};
  if (files.fact(connector.path + "/status") != "connected") return std::nullopt;
  const std::string modes = files.text(connector.path + "/modes").value_or("");
  const auto preferred = modeNamed(std::string_view(modes).substr(0, modes.find('\n')));
  if (!preferred) return std::nullopt;
  connector.isDark = files.fact(connector.path + "/enabled") != "enabled";
  connector.isExternal = !isBuiltIn(name);
  connector.mode = *preferred;
  return connector;
}

std::optional<Connector> mainConnector(const RootFiles& files) {
  std::optional<Connector> best;
  for (const std::string& name : files.names(kConnectors)) {
    auto connector = connectorNamed(files, name);
    if (connector && (!best || connector->rank() < best->rank())) best = std::move(connector);
  }
  return best;
}

bool isPlausible(double dotsPerInch) {
  return dotsPerInch >= kMinDotsPerInch && dotsPerInch <= kMaxDotsPerInch;
}

/// Native pixels to a logical unit; absent when the density is unknown.
std::optional<double> scaleOf(const Mode& mode, const std::optional<PhysicalSize>& size) {
  if (!size) return std::nullopt;
  const double across = mode.width * kMillimetresPerInch / size->widthMillimetres;
  const double down = mode.height * kMillimetresPerInch / size->heightMillimetres;
  if (!isPlausible(across) || !isPlausible(down)) return std::nullopt;
  return across >= kDenseDotsPerInch && down >= kDenseDotsPerInch ? 2.0 : 1.0;
}

}  // namespace

ScreenFacts LinuxScreenFacts::read() {
  ScreenFacts facts;
  const auto connector = mainConnector(files_);
  if (!connector) return facts;
  facts.nativeWidth = connector->mode.width;
  facts.nativeHeight = connector->mode.height;
  const auto edid = files_.text(connector->path + "/edid");
  if (const auto scale = scaleOf(connector->mode, physicalSizeOf(edid.value_or("")))) {
    facts.logicalWidth = connector->mode.width / *scale;
    facts.logicalHeight = connector->mode.height / *scale;
  }
  return facts;
}

std::string LinuxScreenFacts::origin(std::string_view field) const {
  const bool isLogical = field.starts_with("logical");
  return isLogical ? "/sys/class/drm: preferred mode, scaled by the EDID's density"
                   : "/sys/class/drm: preferred mode of the main connector";
}

}  // namespace quorvance
