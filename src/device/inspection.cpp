#include "quorvance/inspection.h"

#include <array>
#include <cstddef>
#include <iterator>
#include <memory>
#include <string_view>
#include <utility>

#include "base/debug.h"
#include "base/forked_child.h"
#include "base/json.h"
#include "base/milliseconds.h"
#include "base/out_of_memory.h"
#include "device/check_point_additional_data.h"
#include "device/device_facts.h"
#include "device/inspected_fields.h"
#include "device/permission_snapshot.h"
#include "device/snapshot_builders.h"
#include "quorvance/alternate_stack.h"

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

/// What an inspection has found, and the task that hands it over. Made beforehand: nothing that
/// comes later may keep it back for want of memory.
struct Findings {
  InspectionCompletion completion;
  std::vector<InspectedField> fields;
  std::shared_ptr<PreparedTask> delivery;

  void deliver() {
    if (completion) callHost([&] { completion(std::move(fields)); });
  }
};

/// Null without memory; then the completion is as it was.
std::shared_ptr<Findings> prepareFindings(BackgroundQueue& queue,
                                          InspectionCompletion& completion) {
  auto findings = std::make_shared<Findings>();
  findings->delivery =
      queue.prepare(WorkLane::completions, [raw = findings.get()](const auto&) { raw->deliver(); });
  if (!findings->delivery) return nullptr;
  findings->completion = std::exchange(completion, nullptr);
  return findings;
}

/// One inspection: every group read and timed on the fact lane, then the permissions, once their
/// first reading has ended. It lives as long as a task that goes on with it. With its end the
/// findings go out: none when a task was lost or found no memory.
class Inspector : public std::enable_shared_from_this<Inspector> {
 public:
  explicit Inspector(const Platform& platform)
      : platform_(platform), texts_(platform.environment) {}
  ~Inspector() {
    if (findings_) findings_->delivery->start(findings_);
  }
  Inspector(const Inspector&) = delete;
  Inspector& operator=(const Inspector&) = delete;

  void start(std::shared_ptr<Findings> findings) {
    findings_ = std::move(findings);
    onFactLane([](Inspector& self) {
      self.askPermissions();
      self.readGroups();
      self.finish();
    });
  }

 private:
  template <class Step>
  void onFactLane(Step step) {
    platform_.backgroundQueue->post(
        WorkLane::facts, withinMemory([self = shared_from_this(), step] { step(*self); }));
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
  void addRecord(std::vector<InspectedField>& fields, std::string_view record, Json json);
  void addPermissions(std::vector<InspectedField>& fields);
  void addPlace(std::vector<InspectedField>& fields);
  std::optional<std::string> keyboards() const;
  SnapshotInputs inputs() const;

  const Platform platform_;
  const SystemTexts texts_;
  std::shared_ptr<Findings> findings_;
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

void Inspector::addRecord(std::vector<InspectedField>& fields, std::string_view record, Json json) {
  const JsonDiscarder discarder(json);
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
  if (layouts.empty()) return std::nullopt;
  Json list(layouts);
  const JsonDiscarder discarder(list);
  return textOf(list);
}

void Inspector::addPlace(std::vector<InspectedField>& fields) {
  CheckPointAdditionalData data;
  if (platform_.location && permissions_.mayLocate()) data.location = platform_.location->lastFix();
  InspectedField field{.record = "permissions", .key = "place"};
  Json json = data.getJson();
  const JsonDiscarder discarder(json);
  if (data.location) field.value = textOf(json.at("location"));
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
    platform_.mainQueue->postAfter(kPermissionPause, withinMemory([self = shared_from_this()] {
                                     self->onFactLane([](Inspector& again) { again.finish(); });
                                   }));
    return;
  }
  std::vector<InspectedField> fields;
  addRecord(fields, kDeviceRecord, buildDeviceData(inputs()).getJson());
  addRecord(fields, kSettingsRecord, buildSettingData(inputs()).getJson());
  addRecord(fields, kSimRecord, buildSimData(inputs()).getJson());
  addPermissions(fields);
  addPlace(fields);
  findings_->fields = std::move(fields);
}

}  // namespace

// As in a manager's operations: nothing in a forked child, and nothing is thrown.
void inspectDevice(const Platform& platform, InspectionCompletion completion) {
  if (isForkedChild()) return;
  ensureAlternateStack();
  hasMemoryFor([&] {
    const auto inspector = std::make_shared<Inspector>(platform);
    auto findings = prepareFindings(*platform.backgroundQueue, completion);
    if (findings) inspector->start(std::move(findings));
  });
  // Last of all resorts: there was no memory to prepare the delivery.
  if (completion) callHost([&] { completion({}); });
}

}  // namespace quorvance
