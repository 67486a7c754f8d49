#include "platform/linux/facts/linux_system_facts.h"

#include <limits.h>
#include <sys/statvfs.h>
#include <sys/sysinfo.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>
#include <limits>
#include <utility>

#include "platform/linux/facts/assignments.h"
#include "platform/linux/facts/chassis_kind.h"
#include "platform/linux/facts/locale_names.h"
#include "platform/linux/facts/time_zone_name.h"

namespace quorvance {
namespace {

constexpr std::string_view kNoOrigin = "nothing on Linux";

// By the members of SystemFacts; of several the first that tells.
constexpr std::pair<std::string_view, std::string_view> kOrigins[] = {
    {"systemVersion", "os-release: VERSION_ID"},
    {"systemName", "os-release: NAME"},
    {"model", "device tree: model, DMI: product_name, uname: machine"},
    {"kindModel", "machine-info: CHASSIS, DMI: chassis_type, device tree: chassis-type"},
    {"localizedModel", "machine-info: CHASSIS, DMI: chassis_type, device tree: chassis-type"},
    {"deviceName", "machine-info: PRETTY_HOSTNAME, gethostname"},
    {"locale", "LC_ALL, LC_MESSAGES, LANG, locale.conf, /etc/default/locale"},
    {"region", "LC_ALL, LC_MESSAGES, LANG, locale.conf, /etc/default/locale"},
    {"language", "LANGUAGE, then as the locale"},
    {"timeZone", "TZ, /etc/localtime, /etc/timezone"},
    {"memoryBytes", "sysinfo"},
    {"isMultitaskingSupported", "true of every Linux"},
};

/// Units of some bytes each; absent when nothing could be read or the product is too large.
std::optional<std::int64_t> bytesOf(std::uint64_t units, std::uint64_t unitBytes) {
  constexpr std::uint64_t kMax = std::numeric_limits<std::int64_t>::max();
  if (units == 0 || unitBytes == 0 || units > kMax / unitBytes) return std::nullopt;
  return static_cast<std::int64_t>(units * unitBytes);
}

std::optional<std::int64_t> fileSystemBytes(const std::string& path) {
  struct statvfs status = {};
  if (statvfs(path.c_str(), &status) != 0) return std::nullopt;
  return bytesOf(status.f_blocks, status.f_frsize);
}

std::optional<std::int64_t> physicalMemoryBytes() {
  struct sysinfo info = {};
  if (sysinfo(&info) != 0) return std::nullopt;
  return bytesOf(info.totalram, info.mem_unit);
}

std::optional<std::string> hostName() {
  std::array<char, HOST_NAME_MAX + 1> name = {};
  if (gethostname(name.data(), name.size() - 1) != 0) return std::nullopt;
  return cleanFact(name.data());
}

}  // namespace

StorageFacts LinuxStorageFacts::read() {
  const std::string home = environment_->variable("HOME").value_or("");
  return {home.empty() ? std::nullopt : fileSystemBytes(home)};
}

std::string LinuxStorageFacts::origin(std::string_view /*field*/) const {
  return "statvfs of $HOME: all of it";
}

LinuxSystemFacts::LinuxSystemFacts(RootFiles files, std::shared_ptr<EnvironmentSource> environment)
    : files_(std::move(files)), environment_(std::move(environment)) {}

SystemFacts LinuxSystemFacts::read() {
  SystemFacts facts;
  readOperatingSystem(facts);
  readMachine(facts);
  readLocale(facts);
  facts.timeZone = timeZone();
  facts.memoryBytes = physicalMemoryBytes();
  facts.isMultitaskingSupported = true;
  return facts;
}

void LinuxSystemFacts::readOperatingSystem(SystemFacts& facts) const {
  std::optional<std::string> release = files_.text("/etc/os-release");
  if (!release) release = files_.text("/usr/lib/os-release");
  const Assignments names = parseAssignments(release.value_or(""));
  facts.systemName = assigned(names, "NAME");
  facts.systemVersion = assigned(names, "VERSION_ID");
}

void LinuxSystemFacts::readMachine(SystemFacts& facts) const {
  const Assignments info = parseAssignments(files_.text("/etc/machine-info").value_or(""));
  facts.model = model();
  facts.kindModel = assigned(info, "CHASSIS");
  if (!facts.kindModel) {
    facts.kindModel = chassisKind(files_.fact("/sys/class/dmi/id/chassis_type").value_or(""));
  }
  if (!facts.kindModel) facts.kindModel = files_.fact("/proc/device-tree/chassis-type");
  facts.localizedModel = facts.kindModel;  // the system has no translations of these words
  facts.deviceName = assigned(info, "PRETTY_HOSTNAME");
  if (!facts.deviceName) facts.deviceName = hostName();
}

std::optional<std::string> LinuxSystemFacts::model() const {
  if (auto board = files_.fact("/proc/device-tree/model")) return board;
  if (auto product = files_.fact("/sys/class/dmi/id/product_name")) return product;
  return cleanFact(environment_->machine());
}

void LinuxSystemFacts::readLocale(SystemFacts& facts) const {
  VariableLookup lookup = [this](std::string_view name) { return variable(name); };
  Assignments settings;
  if (!namesLocale(lookup)) {
    std::optional<std::string> text = files_.text("/etc/locale.conf");
    if (!text) text = files_.text("/etc/default/locale");
    settings = parseAssignments(text.value_or(""));
    lookup = [&settings](std::string_view name) { return assigned(settings, name); };
  }
  LocaleNames names = localeNamesFrom(lookup);
  facts.locale = std::move(names.locale);
  facts.region = std::move(names.region);
  facts.language = std::move(names.language);
}

std::optional<std::string> LinuxSystemFacts::timeZone() const {
  // A set variable decides, even one that names no zone.
  if (const auto value = environment_->variable("TZ")) return timeZoneOfVariable(*value);
  const std::optional<std::string> link = files_.linkTarget("/etc/localtime");
  if (auto zone = timeZoneOfPath(link.value_or(""))) return zone;
  const std::optional<std::string> named = files_.fact("/etc/timezone");
  return named ? timeZoneOfVariable(*named) : std::nullopt;
}

std::string LinuxSystemFacts::origin(std::string_view field) const {
  const auto* const found = std::find_if(std::begin(kOrigins), std::end(kOrigins),
                                         [&](const auto& row) { return row.first == field; });
  return std::string(found == std::end(kOrigins) ? kNoOrigin : found->second);
}

std::optional<std::string> LinuxSystemFacts::variable(std::string_view name) const {
  const std::optional<std::string> value = environment_->variable(name);
  return value ? cleanFact(*value) : std::nullopt;
}

}  // namespace quorvance
