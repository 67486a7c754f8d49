#include "platform/linux/desktop/linux_accessibility_facts.h"

#include <algorithm>
#include <utility>

#include "platform/linux/bus/screen_reader.h"
#include "platform/linux/desktop/desktop_settings.h"
#include "platform/linux/facts/assignments.h"

namespace quorvance {
namespace {

template <class Value>
void fill(std::optional<Value>& field, const std::optional<Value>& fallback) {
  if (!field) field = fallback;
}

/// The layouts of XKBLAYOUT, "de,us".
std::vector<std::string> keyboardLayouts(const RootFiles& files) {
  const Assignments settings = parseAssignments(files.text("/etc/default/keyboard").value_or(""));
  const std::string list = assigned(settings, "XKBLAYOUT").value_or("");
  std::vector<std::string> layouts;
  for (std::string_view rest = list; !rest.empty();) {
    const std::size_t comma = std::min(rest.find(','), rest.size());
    if (comma > 0) layouts.emplace_back(rest.substr(0, comma));
    rest.remove_prefix(std::min(comma + 1, rest.size()));
  }
  return layouts;
}

}  // namespace

LinuxAccessibilityFacts::LinuxAccessibilityFacts(
    std::shared_ptr<FactSource<AccessibilityFacts>> host, BusPlace sessionBus, RootFiles files)
    : host_(std::move(host)), sessionBus_(std::move(sessionBus)), files_(std::move(files)) {}

AccessibilityFacts LinuxAccessibilityFacts::read() {
  AccessibilityFacts facts = host_ ? host_->read() : AccessibilityFacts{};
  const DesktopSettings settings = readDesktopSettings();
  fill(facts.labelFontSize, settings.fontSize);
  fill(facts.buttonFontSize, settings.fontSize);
  fill(facts.isInvertColorsEnabled, settings.isInverted);
  if (!facts.isScreenReaderRunning) facts.isScreenReaderRunning = readScreenReader(sessionBus_);
  fill(facts.isScreenReaderRunning, settings.isScreenReaderOn);
  if (facts.installedKeyboards.empty()) facts.installedKeyboards = keyboardLayouts(files_);
  return facts;
}

std::string LinuxAccessibilityFacts::origin(std::string_view field) const {
  std::string origin = host_ ? "the application's own source, else " : "";
  if (field == "labelFontSize" || field == "buttonFontSize") {
    return origin + "GSettings: font-name, text-scaling-factor";
  }
  if (field == "isInvertColorsEnabled") return origin + "GSettings: invert-lightness";
  if (field == "isScreenReaderRunning") return origin + "D-Bus: org.a11y.Status";
  if (field == "installedKeyboards") return origin + "/etc/default/keyboard: XKBLAYOUT";
  return host_ ? "the application's own source" : "nothing on Linux, unless the application tells";
}

}  // namespace quorvance
