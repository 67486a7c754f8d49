#include "diagnostics/crash_plan.h"

#include <gmock/gmock.h>

#include "base/json.h"
#include "diagnostics/crash_report.h"
#include "diagnostics/signal_names.h"

namespace quorvance {
namespace {

constexpr std::int64_t kCrashTime = 1'700'000'000'123;
const std::string kCrashStack = "a \"frame\"\nC:\\b\t\x01\n\xC3\xA9 \xFF";

std::string insideOfJsonText(const std::string& text) {
  const std::string quoted = textOf(Json(text));
  return quoted.substr(1, quoted.size() - 2);
}

std::string fillIn(const CrashReportTemplate& reportTemplate, const CrashModel& model) {
  std::string text;
  for (const CrashTemplatePart& part : reportTemplate) {
    text += part.bytes;
    switch (part.next) {
      case CrashPlaceholder::nothing:
        break;
      case CrashPlaceholder::callStack:
        text += insideOfJsonText(model.callStack);
        break;
      case CrashPlaceholder::reason:
        text += insideOfJsonText(model.reason);
        break;
      case CrashPlaceholder::name:
        text += insideOfJsonText(model.name);
        break;
      case CrashPlaceholder::milliseconds:
        text += std::to_string(kCrashTime);
        break;
    }
  }
  return text;
}

std::string storedText(const CrashModel& model) {
  return *writeJsonIndented(crashReport(model, kCrashTime).getJson());
}

// Values that look like the places where a report is cut.
const CrashVersions kOddVersions[] = {
    {"1.0.0", "12", "x86_64"},
    {"", "", ""},
    {"\n  \"cause\": \"", "\n  \"error_stack\": \"\\", "\n  \"error_timestamp\": 0\n}\xFE"},
};

TEST(CrashPlanTest, FilledFormsAreTheStoredReportsByteForByte) {
  for (const CrashVersions& versions : kOddVersions) {
    const CrashPlan plan = makeCrashPlan(versions);
    ASSERT_EQ(plan.signals.size(), kSignalNames.size());
    for (const SignalPlan& signal : plan.signals) {
      const CaughtCrash crash{false, signal.name, signal.reason, kCrashStack, true};
      const CrashModel model = crashModelOf(crash, versions);
      EXPECT_EQ(fillIn(signal.reportTemplate, model), storedText(model));
    }
    const CaughtCrash thrown{true, "bank::\"Error\"", "no\nmoney \xE2\x82", kCrashStack, true};
    const CrashModel model = crashModelOf(thrown, versions);
    EXPECT_EQ(fillIn(plan.exceptionTemplate, model), storedText(model));
  }
}

TEST(CrashPlanTest, ReasonNamesTheSignalOfTheVocabulary) {
  EXPECT_EQ(signalReason(11), "Signal SIGSEGV(11) was raised.\n");
  EXPECT_EQ(signalReason(2), "Signal OTHER(2) was raised.\n");
}

}  // namespace
}  // namespace quorvance
