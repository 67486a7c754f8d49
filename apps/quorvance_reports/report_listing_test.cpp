#include "apps/quorvance_reports/report_listing.h"

#include <gmock/gmock.h>

#include <sstream>

#include "platform/testing/temporary_folder_test_support.h"

namespace quorvance_reports {
namespace {

TEST(ReportListingTest, TellsEachReportAndLeavesOthersOut) {
  const quorvance::TemporaryFolder folder;
  folder.put("crashB.json", R"({"error_type":"SIGSEGV","error_code":11})");
  folder.put("crashA.json", "rubbish");
  folder.put("activityA.json", R"({"screenType":"startApp","userId":"u\u001b[31m"})");
  folder.put("unreadable-bioA.json", "[]");
  folder.put("unreadable-state.json", "[]");
  folder.put("state.json", "{}");
  folder.put(".report-new-12-3456-crashC.json", R"({"error_type":"SIGBUS"})");
  folder.put(".report-again-12-3456-crashB.json", "{\"torn");
  folder.put(".lock-reports", "");
  std::filesystem::create_directory(folder.path() + "/bioFolder");
  const auto reports = listReports(folder.path());
  std::vector<std::string> lines;
  lines.reserve(reports.size());
  for (const auto& report : reports) lines.push_back(report.category + " " + report.summary);
  EXPECT_THAT(lines,
              testing::ElementsAre("activity screenType startApp, userId u [31m",
                                   "bio not readable as a report", "crash not readable as a report",
                                   "crash error_type SIGSEGV, error_code 11",
                                   "temporary torn or being written", "temporary error_type SIGBUS",
                                   "unreadable not readable as a report"));
  std::ostringstream shown;
  printReports(shown, folder.path(), reports);
  EXPECT_EQ(shown.str().find('\x1b'), std::string::npos);
  EXPECT_NE(shown.str().find("\"error_code\": 11"), std::string::npos);
}

TEST(ReportListingTest, MissingFolderIsAnError) {
  EXPECT_THROW(listReports("/no/such/folder"), std::filesystem::filesystem_error);
}

}  // namespace
}  // namespace quorvance_reports
