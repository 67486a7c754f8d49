#include "quorvance/inspection.h"

#include <array>
#include <cstddef>
#include <iterator>
#include <memory>
#include <string_view>
#include <utility>

#include "base/debug.h"
#include "base/json.h"
#include "base/milliseconds.h"
#include "device/check_point_additional_data.h"
#include "device/device_facts.h"
#include "device/inspected_fields.h"
#include "device/permission_snapshot.h"
#include "device/snapshot_builders.h"

namespace quorvance {
namespace {

using Clock = std::chrono::steady_clock;

// A bus answers, or is given up, in half a second.
constexpr std::chrono::milliseconds kPermissionPause{50};
constexpr int kMaxPermissionPauses = 40;

constexpr std::string_view kStatusWords[] = {"notDetermined", "restricted", "denied", "authorized",
                                             "authorizedWhenInUse"};

std::string quoted(AuthorizationStatus status) {
  const auto index = static_cast<std::size_t>(status);
  return textOf(Json(index < std::size(kStatusWords) ? kStatusWords[index] : "unknown"));
}

/// One inspection: every group read and timed on the fact lane, then the permissions, once their
/// first reading has ended.
class Inspector : public std::enable_shared_from_this<Inspector> {
 public:
  Inspector(const Platform& platform, InspectionCompletion completion)
      : platform_(platform), texts_(platform.environment), completion_(std::move(completion)) {}

  void start() {
    onFactLane([](Inspector& self) {
      self.askPermissions();
      self.readGroups();
      self.finish();
    });
  }

 private:
  template <class Step>
  void onFactLane(Step step) {
    platform_.backgroundQueue->post(WorkLane::facts,
                                    [self = shared_from_this(), step] { step(*self); });
  }

  template <class Read>
  void timed(FactGroup group, Read read) {
    const auto start = Clock::now();
    read();
    const auto cost = std::chrono::ceil<std::chrono::microseconds>(Clock::now() - start);
    costs_[static_cast<std::size_t>(group)] = cost;
  }

  void readGroups();
  void readIdentity();
  void askPermissions();
  void finish();
  void addRecord(std::vector<InspectedField>& fields, std::string_view record, const Json& json);
  void addPermissions(std::vector<InspectedField>& fields);
  void addPlace(std::vector<InspectedField>& fields);
  std::optional<std::string> keyboards() const;
  SnapshotInputs inputs() const;

  const Platform platform_;
  const SystemTexts texts_;
  const InspectionCompletion completion_;
  DeviceFacts facts_;
  std::optional<std::string> vendorIdentifier_;
  std::optional<std::string> advertisingIdentifier_;
  PermissionSnapshot permissions_;
  std::array<std::optional<std::chrono::microseconds>, kFactGroups> costs_{};
  int pauses_ = 0;
};

void Inspector::readIdentity() {
  if (!platform_.identity) return;
  vendorIdentifier_ = platform_.identity->vendorIdentifier();
  advertisingIdentifier_ = platform_.identity->advertisingIdentifier();
}

void Inspector::readGroups() {
  const DeviceFactSources& sources = platform_.facts;
  timed(FactGroup::fixed, [] {});
  timed(FactGroup::identity, [&] { readIdentity(); });
  timed(FactGroup::system, [&] { facts_.system = readSystem(sources, texts_); });
  timed(FactGroup::storage, [&] { facts_.storage = readStorage(sources); });
  timed(FactGroup::screen, [&] { facts_.screen = readScreen(sources); });
  timed(FactGroup::fonts,
        [&] { facts_.fonts = std::make_shared<const FontFacts>(readFonts(sources)); });
  if (isInDebugMode()) {
    timed(FactGroup::posture, [&] { facts_.posture = readPosture(sources); });
    timed(FactGroup::power, [&] { facts_.power = readPower(sources); });
  }
  timed(FactGroup::accessibility, [&] { facts_.accessibility = readAccessibility(sources); });
  timed(FactGroup::network, [&] { facts_.network = readNetwork(sources); });
}

void Inspector::askPermissions() {
  if (!platform_.authorization) return;
  timed(FactGroup::permissions,
        [&] { permissions_ = PermissionSnapshot::take(*platform_.authorization); });
}

SnapshotInputs Inspector::inputs() const {
  const auto& environment = platform_.environment;
  return {.facts = facts_,
          .vendorIdentifier = vendorIdentifier_,
          .advertisingIdentifier = advertisingIdentifier_,
          .now = millisecondsFromSeconds(platform_.clock->secondsSince1970()),
          .isInDebugMode = isInDebugMode(),
          .isEmulator = environment && environment->variable(kSimulatorModelVariable).has_value()};
}

void Inspector::addRecord(std::vector<InspectedField>& fields, std::string_view record,
                          const Json& json) {
  for (const FieldOrigin& origin : inspectedFields()) {
    if (origin.record != record) continue;
    InspectedField field{.record = std::string(record), .key = std::string(origin.key)};
    if (const Json* value = findMember(json, origin.key)) field.value = textOf(*value);
    field.isSent = field.value.has_value();
    // Known in production too; the configuration request tells it.
    if (origin.member == "kindModel") field.value = textOf(Json(*facts_.system.kindModel));
    if (origin.member == "installedKeyboards") field.value = keyboards();
    field.source = sourceOf(origin, platform_);
    field.cost = costs_[static_cast<std::size_t>(origin.group)];
    field.governedBy = origin.governedBy;
    fields.push_back(std::move(field));
  }
}

// Known, and never sent.
std::optional<std::string> Inspector::keyboards() const {
  const auto& layouts = facts_.accessibility.installedKeyboards;
  return layouts.empty() ? std::nullopt : std::optional(textOf(Json(layouts)));
}

void Inspector::addPlace(std::vector<InspectedField>& fields) {
  CheckPointAdditionalData data;
  if (platform_.location && permissions_.mayLocate()) data.location = platform_.location->lastFix();
  InspectedField field{.record = "permissions", .key = "place"};
  if (data.location) field.value = textOf(data.getJson().at("location"));
  field.isSent = field.value.has_value();
  field.source = platform_.authorization
                     ? platform_.authorization->origin(AuthorizationSubject::location)
                     : "no source";
  field.governedBy = "location permission";
  fields.push_back(std::move(field));
}

void Inspector::addPermissions(std::vector<InspectedField>& fields) {
  const auto add = [&](const char* key, std::string value, std::string source) {
    fields.push_back({.record = "permissions",
                      .key = key,
                      .value = std::move(value),
                      .isSent = true,
                      .source = std::move(source),
                      .cost = costs_[static_cast<std::size_t>(FactGroup::permissions)],
                      .governedBy = "each session and checkpoint"});
  };
  const auto origin = [&](AuthorizationSubject subject) {
    return platform_.authorization ? platform_.authorization->origin(subject) : "no source";
  };
  using Subject = AuthorizationSubject;
  add("locationServices", permissions_.locationServicesEnabled ? "true" : "false",
      origin(Subject::location));
  add("location", quoted(permissions_.location), origin(Subject::location));
  add("photos", quoted(permissions_.photos), origin(Subject::photos));
  add("contacts", quoted(permissions_.contacts), origin(Subject::contacts));
  add("camera", quoted(permissions_.camera), origin(Subject::camera));
  add("events", quoted(permissions_.events), origin(Subject::events));
  add("reminders", quoted(permissions_.reminders), origin(Subject::reminders));
}

void Inspector::finish() {
  askPermissions();
  if (platform_.authorization && !platform_.authorization->hasRead() &&
      pauses_++ < kMaxPermissionPauses) {
    platform_.mainQueue->postAfter(kPermissionPause, [self = shared_from_this()] {
      self->onFactLane([](Inspector& again) { again.finish(); });
    });
    return;
  }
  std::vector<InspectedField> fields;
  addRecord(fields, kDeviceRecord, buildDeviceData(inputs()).getJson());
  addRecord(fields, kSettingsRecord, buildSettingData(inputs()).getJson());
  addRecord(fields, kSimRecord, buildSimData(inputs()).getJson());
  addPermissions(fields);
  addPlace(fields);
  platform_.backgroundQueue->post(WorkLane::completions,
                                  [self = shared_from_this(), found = std::move(fields)]() mutable {
                                    if (self->completion_) self->completion_(std::move(found));
                                  });
}

}  // namespace

void inspectDevice(const Platform& platform, InspectionCompletion completion) {
  std::make_shared<Inspector>(platform, std::move(completion))->start();
}

}  // namespace quorvance
