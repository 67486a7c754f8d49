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

struct CrashCut {
  /// Where the slot begins: after this. A line end never stands inside a JSON text, so that no
  /// value can be taken for a key.
  std::string_view before;
  CrashSlot slot;
};

constexpr CrashCut kCrashCuts[] = {
    {"\n  \"error_stack\": \"", CrashSlot::callStack},
    {"\n  \"cause\": \"", CrashSlot::reason},
    {"\n  \"error_type\": \"", CrashSlot::name},
    {"\n  \"error_timestamp\": ", CrashSlot::milliseconds},
};

bool isFilledIn(CrashSlot slot, CrashModelType type) {
  const bool isText = slot == CrashSlot::reason || slot == CrashSlot::name;
  return type == CrashModelType::exception || !isText;
}

// The report of this very model, cut in the order of its keys. Slots are empty in it, except for
// the time, whose one digit goes.
CrashForm formOf(const CrashModel& model) {
  constexpr std::int64_t kNoTime = 0;
  constexpr std::string_view kNoTimeText = "0";
  const std::string text =
      writeJsonIndented(crashReport(model, kNoTime).getJson()).value_or(std::string());
  std::string_view rest = text;
  CrashForm form;
  for (const CrashCut& cut : kCrashCuts) {
    if (!isFilledIn(cut.slot, model.type)) continue;
    const std::size_t found = rest.find(cut.before);
    if (found == std::string_view::npos) continue;
    const std::size_t end = found + cut.before.size();
    form.push_back({std::string(rest.substr(0, end)), cut.slot});
    rest.remove_prefix(end);
    if (cut.slot == CrashSlot::milliseconds) rest.remove_prefix(kNoTimeText.size());
  }
  form.push_back({std::string(rest), CrashSlot::nothing});
  return form;
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
    CrashForm form = formOf(model);
    plan.signals.push_back({std::move(model.name), std::move(model.reason), std::move(form)});
  }
  plan.exceptionForm = formOf(emptyModel(CrashModelType::exception, versions));
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
