#include "diagnostics/crash_plan.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "base/json.h"
#include "diagnostics/crash_report.h"
#include "diagnostics/report_store.h"
#include "diagnostics/signal_names.h"

namespace quorvance {
namespace {

struct PlaceholderMark {
  /// Where the placeholder begins: after this. A line end never stands inside a JSON text, so that
  /// no value can be taken for a key.
  std::string_view before;
  CrashPlaceholder placeholder;
};

constexpr PlaceholderMark kPlaceholderMarks[] = {
    {"\n  \"error_stack\": \"", CrashPlaceholder::callStack},
    {"\n  \"cause\": \"", CrashPlaceholder::reason},
    {"\n  \"error_type\": \"", CrashPlaceholder::name},
    {"\n  \"error_timestamp\": ", CrashPlaceholder::milliseconds},
};

bool isFilledIn(CrashPlaceholder placeholder, CrashModelType type) {
  const bool isText =
      placeholder == CrashPlaceholder::reason || placeholder == CrashPlaceholder::name;
  return type == CrashModelType::exception || !isText;
}

// The report of this very model, cut in the order of its keys. Placeholders are empty in it, except
// for the time, whose one digit goes.
CrashReportTemplate templateOf(const CrashModel& model) {
  constexpr std::int64_t kNoTime = 0;
  constexpr std::string_view kNoTimeText = "0";
  Json report = crashReport(model, kNoTime).getJson();
  const JsonDiscarder discarder(report);
  const std::string text = writeJsonIndented(report).value_or(std::string());
  std::string_view rest = text;
  CrashReportTemplate reportTemplate;
  for (const PlaceholderMark& mark : kPlaceholderMarks) {
    if (!isFilledIn(mark.placeholder, model.type)) continue;
    const std::size_t found = rest.find(mark.before);
    if (found == std::string_view::npos) continue;
    const std::size_t end = found + mark.before.size();
    reportTemplate.push_back({std::string(rest.substr(0, end)), mark.placeholder});
    rest.remove_prefix(end);
    if (mark.placeholder == CrashPlaceholder::milliseconds) rest.remove_prefix(kNoTimeText.size());
  }
  reportTemplate.push_back({std::string(rest), CrashPlaceholder::nothing});
  return reportTemplate;
}

CrashModel emptyModel(CrashModelType type, const CrashVersions& versions) {
  CrashModel model;
  model.type = type;
  model.sdkVer = versions.sdkVer;
  model.iosVer = versions.iosVer;
  model.devModel = versions.devModel;
  return model;
}

}  // namespace

std::string signalReason(int number) {
  return "Signal " + std::string(signalName(number)) + "(" + std::to_string(number) +
         ") was raised.\n";
}

CrashPlan makeCrashPlan(const CrashVersions& versions) {
  CrashPlan plan;
  for (const SignalName& row : kSignalNames) {
    CrashModel model = emptyModel(CrashModelType::signal, versions);
    model.name = row.name;
    model.reason = signalReason(row.number);
    CrashReportTemplate reportTemplate = templateOf(model);
    plan.signals.push_back(
        {std::move(model.name), std::move(model.reason), std::move(reportTemplate)});
  }
  plan.exceptionTemplate = templateOf(emptyModel(CrashModelType::exception, versions));
  plan.category = categoryWord(ReportCategory::crash);
  plan.maxFiles = kMaxReportsPerCategory;
  return plan;
}

CrashModel crashModelOf(const CaughtCrash& crash, const CrashVersions& versions) {
  CrashModel model =
      emptyModel(crash.isException ? CrashModelType::exception : CrashModelType::signal, versions);
  model.name = crash.name;
  model.reason = crash.reason;
  model.callStack = crash.callStack;
  model.isStored = crash.isStored;
  return model;
}

}  // namespace quorvance
