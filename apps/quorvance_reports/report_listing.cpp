#include "apps/quorvance_reports/report_listing.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <iomanip>
#include <nlohmann/json.hpp>
#include <optional>
#include <ostream>
#include <sstream>
#include <string_view>

namespace quorvance_reports {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::array<std::string_view, 4> kCategories = {"activity", "bio", "communicationError",
                                                         "crash"};
constexpr std::string_view kSetAside = "unreadable-";
constexpr std::string_view kTemporaryPrefix = ".report-";
constexpr const char* kTemporary = "temporary";
constexpr std::size_t kMaxSummary = 100;

std::optional<std::string> categoryOf(std::string_view name) {
  if (name.starts_with(kTemporaryPrefix)) return kTemporary;
  const bool isSetAside = name.starts_with(kSetAside);
  if (isSetAside) name.remove_prefix(kSetAside.size());
  for (const std::string_view category : kCategories) {
    if (name.starts_with(category)) return isSetAside ? "unreadable" : std::string(category);
  }
  return std::nullopt;
}

std::optional<Json> readReport(const std::filesystem::path& path) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(std::filesystem::symlink_status(path, error))) return {};
  if (std::filesystem::file_size(path, error) > kMaxShownBytes || error) return {};
  std::ostringstream bytes;
  bytes << std::ifstream(path, std::ios::binary).rdbuf();
  Json report = Json::parse(bytes.str(), nullptr, false);
  if (!report.is_object()) return {};
  return report;
}

std::string textIn(const Json& report, const char* key) {
  const auto found = report.find(key);
  if (found == report.end()) return {};
  return found->is_string() ? found->get<std::string>() : found->dump();
}

// One line without control characters.
std::string tidied(std::string text) {
  std::replace_if(
      text.begin(), text.end(),
      [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7F'; }, ' ');
  if (text.size() > kMaxSummary) text = text.substr(0, kMaxSummary) + "...";
  return text;
}

std::string summaryOf(const std::optional<Json>& report) {
  if (!report) return "not readable as a report";
  std::string summary;
  for (const char* key : {"error_type", "error_code", "cause", "screenType", "screenId", "userId",
                          "error_timestamp", "timestampStart"}) {
    const std::string text = textIn(*report, key);
    if (!text.empty()) summary += (summary.empty() ? "" : ", ") + std::string(key) + " " + text;
  }
  return tidied(summary.empty() ? "no field that is known" : summary);
}

}  // namespace

std::vector<ListedReport> listReports(const std::filesystem::path& folder) {
  std::vector<ListedReport> reports;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    const std::string name = entry.path().filename().string();
    const auto category = categoryOf(name);
    if (!category) continue;
    std::error_code ignored;  // what has no size is no file, which the summary tells
    const auto bytes = entry.is_regular_file(ignored) ? entry.file_size(ignored) : 0;
    const auto report = readReport(entry.path());
    const bool isTorn = *category == kTemporary && !report;
    reports.push_back(
        {*category, name, bytes, isTorn ? "torn or being written" : summaryOf(report)});
  }
  std::sort(reports.begin(), reports.end(), [](const ListedReport& a, const ListedReport& b) {
    return std::tie(a.category, a.name) < std::tie(b.category, b.name);
  });
  return reports;
}

void printList(std::ostream& out, const std::vector<ListedReport>& reports) {
  for (const ListedReport& report : reports) {
    out << std::left << std::setw(20) << report.category << std::right << std::setw(9)
        << report.bytes << " B  " << tidied(report.name) << "\n"
        << std::string(33, ' ') << report.summary << "\n";
  }
  out << reports.size() << (reports.size() == 1 ? " report\n" : " reports\n");
}

void printReports(std::ostream& out, const std::filesystem::path& folder,
                  const std::vector<ListedReport>& reports) {
  for (const ListedReport& listed : reports) {
    out << "== " << tidied(listed.name) << "\n";
    const auto report = readReport(folder / listed.name);
    // Escaped to ASCII: what a report holds may be anything.
    out << (report ? report->dump(2, ' ', true, Json::error_handler_t::replace)
                   : "not readable as a report")
        << "\n";
  }
}

}  // namespace quorvance_reports
