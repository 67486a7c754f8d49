// What stands in a report folder, for a person to read. Only reads: nothing is sent, moved or
// removed. It knows nothing of the library but the names and the form of the files.
#pragma once

#include <filesystem>
#include <iosfwd>
#include <string>
#include <vector>

namespace quorvance_reports {

// Larger files are listed and not opened.
inline constexpr std::uintmax_t kMaxShownBytes = std::uintmax_t{8} << 20;

struct ListedReport {
  // "unreadable" for what the library has set aside, "temporary" for what a process is writing or
  // did not live to finish
  std::string category;
  std::string name;
  std::uintmax_t bytes = 0;
  std::string summary;  // what it tells in one line, or why it cannot be told
};

// By category, then by name. Throws std::filesystem::filesystem_error when the folder cannot be
// read.
std::vector<ListedReport> listReports(const std::filesystem::path& folder);

void printList(std::ostream& out, const std::vector<ListedReport>& reports);

// Every report, indented, under its name. Text from a report never reaches a terminal as control
// characters.
void printReports(std::ostream& out, const std::filesystem::path& folder,
                  const std::vector<ListedReport>& reports);

}  // namespace quorvance_reports
