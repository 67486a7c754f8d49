#include "device/device_facts.h"

#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/text.h"

namespace quorvance {
namespace {

template <class Facts>
Facts readOrUnknown(const std::shared_ptr<FactSource<Facts>>& source) {
  return source ? source->read() : Facts{};
}

bool isText(const std::string& text) { return !text.empty() && isReadableText(text); }

template <class... Texts>
void dropUnreadable(Texts&... texts) {
  const auto drop = [](std::optional<std::string>& text) {
    if (text && !isText(*text)) text.reset();
  };
  (drop(texts), ...);
}

void dropUnreadableOf(std::vector<std::string>& texts) {
  std::erase_if(texts, [](const std::string& text) { return !isText(text); });
}

/// Switches monitoring on, and at its end back to what it was, also when the reading throws.
class MonitoredPower {
 public:
  explicit MonitoredPower(PowerSource& source)
      : source_(source), found_(source.isMonitoringEnabled()) {
    if (found_) source_.setMonitoringEnabled(true);
  }
  ~MonitoredPower() {
    if (found_) source_.setMonitoringEnabled(*found_);
  }
  MonitoredPower(const MonitoredPower&) = delete;
  MonitoredPower& operator=(const MonitoredPower&) = delete;

  PowerFacts read() const { return {.isMonitoringEnabled = found_, .battery = source_.read()}; }

 private:
  PowerSource& source_;
  const std::optional<bool> found_;
};

}  // namespace

SystemFacts completed(SystemFacts facts, const SystemTexts& texts) {
  dropUnreadable(facts.systemVersion, facts.systemName, facts.model, facts.kindModel,
                 facts.localizedModel, facts.deviceName, facts.locale, facts.region, facts.language,
                 facts.timeZone);
  if (auto simulated = texts.simulatedModel()) facts.model = std::move(simulated);
  if (!facts.model) facts.model = texts.deviceModel();
  if (!facts.kindModel) facts.kindModel = kUnknownKindModel;
  return facts;
}

SystemFacts readSystem(const DeviceFactSources& sources, const SystemTexts& texts) {
  return completed(readOrUnknown(sources.system), texts);
}

StorageFacts readStorage(const DeviceFactSources& sources) {
  return readOrUnknown(sources.storage);
}

ScreenFacts readScreen(const DeviceFactSources& sources) { return readOrUnknown(sources.screen); }

FontFacts readFonts(const DeviceFactSources& sources) {
  FontFacts facts = readOrUnknown(sources.fonts);
  dropUnreadableOf(facts.familyNames);
  std::erase_if(facts.fontsByFamily, [](const auto& entry) { return !isText(entry.first); });
  for (auto& [family, fonts] : facts.fontsByFamily) dropUnreadableOf(fonts);
  return facts;
}

PostureFacts readPosture(const DeviceFactSources& sources) {
  return readOrUnknown(sources.posture);
}

PowerFacts readPower(const DeviceFactSources& sources) {
  return sources.power ? MonitoredPower(*sources.power).read() : PowerFacts{};
}

AccessibilityFacts readAccessibility(const DeviceFactSources& sources) {
  AccessibilityFacts facts = readOrUnknown(sources.accessibility);
  dropUnreadableOf(facts.installedKeyboards);
  return facts;
}

NetworkFacts readNetwork(const DeviceFactSources& sources) {
  NetworkFacts facts = readOrUnknown(sources.network);
  dropUnreadable(facts.radioTechnology, facts.mobileCountryCode, facts.mobileNetworkCode,
                 facts.carrierName, facts.carrierCountry);
  return facts;
}

}  // namespace quorvance
