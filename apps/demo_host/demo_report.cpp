#include "apps/demo_host/demo_report.h"

#include <spawn.h>
#include <sys/wait.h>

#include <cerrno>
#include <string>
#include <system_error>
#include <vector>

#include "apps/demo_host/demo_errors.h"

extern char** environ;  // NOLINT: POSIX declares it nowhere

namespace demo_host {

ReportLog::ReportLog(const DemoOptions& options) : file_(options.logFile) {
  if (file_ || !options.report) return;
  file_ = own_.emplace(TemporaryPath::Kind::file, "quorvance-calls-XXXXXX").path();
}

void writeReport(const DemoOptions& options, const std::filesystem::path& log) {
  std::vector<std::string> words = {options.riskServer.string(), "--report-from", log.string(),
                                    options.report->string()};
  if (options.reportIsPlain) words.emplace_back("--plain");
  std::vector<char*> command;
  command.reserve(words.size() + 1);
  for (std::string& word : words) command.push_back(word.data());
  command.push_back(nullptr);
  pid_t child = -1;
  const int code = posix_spawn(&child, command[0], nullptr, nullptr, command.data(), environ);
  if (code != 0) throw RunError("the report: " + std::generic_category().message(code));
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) throw RunError("the report was not made");
}

}  // namespace demo_host
