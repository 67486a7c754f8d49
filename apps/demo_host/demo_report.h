// The page that shows a run of the demo to somebody who was not there.
#pragma once

#include <filesystem>
#include <optional>

#include "apps/demo_host/demo_arguments.h"
#include "apps/demo_host/temporary_path.h"

namespace demo_host {

// The log from which the report is made: the one that is asked for, or a temporary one.
class ReportLog {
 public:
  // Throws RunError when there can be no temporary file.
  explicit ReportLog(const DemoOptions& options);

  // Absent when neither log nor report is wanted.
  const std::optional<std::filesystem::path>& file() const { return file_; }

 private:
  std::optional<TemporaryPath> own_;
  std::optional<std::filesystem::path> file_;
};

// Has the risk server's program make the report of the log. Throws RunError when it fails.
void writeReport(const DemoOptions& options, const std::filesystem::path& log);

}  // namespace demo_host
