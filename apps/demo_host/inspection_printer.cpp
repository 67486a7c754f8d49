#include "apps/demo_host/inspection_printer.h"

#include <algorithm>
#include <future>
#include <memory>
#include <nlohmann/json.hpp>
#include <utility>

#include "apps/demo_host/demo_errors.h"
#include "apps/demo_host/state_folder.h"
#include "quorvance/json.h"
#include "quorvance/platform/linux_platform.h"
#include "quorvance/quorvance_manager.h"

namespace demo_host {
namespace {

using quorvance::InspectedField;
using quorvance::Json;

// Buses that hang are given up long before.
constexpr std::chrono::seconds kReadingTime{30};
constexpr std::size_t kKeyWidth = 29;
constexpr std::size_t kValueWidth = 42;
constexpr std::size_t kCostWidth = 10;
constexpr std::size_t kGovernedWidth = 40;
constexpr const char* kApplication = "org.example.inspection";

bool isContinuation(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

std::size_t charactersOf(const std::string& text) {
  return static_cast<std::size_t>(
      std::count_if(text.begin(), text.end(), [](char c) { return !isContinuation(c); }));
}

// As wide as the column, cut with dots where it is longer.
std::string column(std::string text, std::size_t width) {
  constexpr const char* kDots = "...";
  if (charactersOf(text) > width) {
    while (charactersOf(text) > width - 3 || isContinuation(text.back())) text.pop_back();
    text += kDots;
  }
  return text + std::string(width - charactersOf(text) + 1, ' ');
}

std::string costOf(const InspectedField& field) {
  return field.cost ? std::to_string(field.cost->count()) + " us" : "not read";
}

std::vector<InspectedField> readDevice(const DemoOptions& options) {
  StateFolder state(options.dataFolder);
  quorvance::LinuxPlatformOptions platformOptions;
  platformOptions.hostApplication = {kApplication, std::nullopt};
  platformOptions.dataFolder = state.path().string();
  const quorvance::Platform platform = quorvance::makeLinuxPlatform(std::move(platformOptions));
  state.isWrittenBy(platform.backgroundQueue);
  // The completion may come after this function has given up.
  const auto read = std::make_shared<std::promise<std::vector<InspectedField>>>();
  auto fields = read->get_future();
  quorvance::inspectDevice(
      platform, [read](std::vector<InspectedField> found) { read->set_value(std::move(found)); });
  if (fields.wait_for(kReadingTime) != std::future_status::ready) {
    throw RunError("the device could not be read in " + std::to_string(kReadingTime.count()) +
                   " s");
  }
  return fields.get();
}

}  // namespace

std::string inspectionTable(const std::vector<InspectedField>& fields) {
  std::string table;
  std::string record;
  for (const InspectedField& field : fields) {
    if (field.record != record) {
      record = field.record;
      table += (table.empty() ? "" : "\n") + column(record, kKeyWidth) +
               column("value", kValueWidth) + column("cost", kCostWidth) +
               column("sent with", kGovernedWidth) + "source\n";
    }
    table += column("  " + field.key, kKeyWidth) +
             column(field.value.value_or("absent"), kValueWidth) +
             column(costOf(field), kCostWidth) + column(field.governedBy, kGovernedWidth) +
             field.source + "\n";
  }
  return table;
}

std::string inspectionJson(const std::vector<InspectedField>& fields) {
  Json all = Json::object();
  Json list = Json::array();
  for (const InspectedField& field : fields) {
    Json& record = all[field.record];
    if (record.is_null()) record = Json::object();
    Json entry = Json::object();
    entry["record"] = field.record;
    entry["key"] = field.key;
    if (field.value) entry["value"] = Json::parse(*field.value);
    if (field.isSent) record[field.key] = entry["value"];
    entry["sent"] = field.isSent;
    entry["source"] = field.source;
    if (field.cost) entry["cost_us"] = field.cost->count();
    entry["governed_by"] = field.governedBy;
    list.push_back(std::move(entry));
  }
  all["fields"] = std::move(list);
  return all.dump(2) + "\n";
}

int printInspection(const DemoOptions& options, std::ostream& out) {
  quorvance::QuorvanceManager::setIsInDebugMode(options.debug);
  const std::vector<InspectedField> fields = readDevice(options);
  quorvance::QuorvanceManager::setIsInDebugMode(false);
  out << (options.json ? inspectionJson(fields) : inspectionTable(fields)) << std::flush;
  return kPlayedAsExpected;
}

}  // namespace demo_host
