#include "platform/linux/storage/temporary_name.h"

#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <sstream>
#include <utility>

#include "platform/linux/storage/private_files.h"

namespace quorvance {
namespace {

constexpr std::string_view kNew = "new";
constexpr std::string_view kAgain = "again";
constexpr std::size_t kMaxStatusBytes = 4096;

struct ProcessStatus {
  char state = 0;
  std::string start;
};

// See proc(5): what follows the command's name in brackets, which may hold anything.
std::optional<ProcessStatus> statusOf(const std::string& process) {
  constexpr int kFieldsBetween = 18;
  const SmallFile file = readSmallFile("/proc/" + process + "/stat", kMaxStatusBytes);
  const std::size_t nameEnd = file.bytes.rfind(')');
  if (nameEnd == std::string::npos) return std::nullopt;
  std::istringstream fields(file.bytes.substr(nameEnd + 1));
  ProcessStatus status;
  fields >> status.state;
  for (int i = 0; i < kFieldsBetween; ++i) fields >> status.start;
  if (!(fields >> status.start)) return std::nullopt;
  return status;
}

bool exists(pid_t process) { return kill(process, 0) == 0 || errno != ESRCH; }

/// Takes the text before the next "-" and that off the front; empty when there is none.
std::string_view takeWord(std::string_view& text) {
  const std::size_t end = text.find('-');
  if (end == std::string_view::npos) return {};
  const std::string_view word = text.substr(0, end);
  text.remove_prefix(end + 1);
  return word;
}

}  // namespace

std::string TemporaryName::make(const std::string& document, bool isReplacement) {
  const auto self = statusOf("self");
  return std::string(kPrefix) + std::string(isReplacement ? kAgain : kNew) + "-" +
         std::to_string(getpid()) + "-" + (self ? self->start : "0") + "-" + document;
}

std::optional<TemporaryName> TemporaryName::parse(std::string_view name) {
  if (!name.starts_with(kPrefix)) return std::nullopt;
  name.remove_prefix(kPrefix.size());
  const std::string_view kind = takeWord(name);
  const std::string_view process = takeWord(name);
  const std::string_view start = takeWord(name);
  TemporaryName parsed{0, std::string(start), kind == kAgain, std::string(name)};
  const auto [end, error] =
      std::from_chars(process.data(), process.data() + process.size(), parsed.process);
  const bool isNumber =
      error == std::errc() && end == process.data() + process.size() && parsed.process > 0;
  if ((kind != kNew && kind != kAgain) || !isNumber || name.empty()) return std::nullopt;
  return parsed;
}

bool TemporaryName::isProcessAlive() const {
  const auto status = statusOf(std::to_string(process));
  if (!status) return exists(process);
  const bool isEnded = status->state == 'Z' || status->state == 'X';
  return !isEnded && status->start == processStart;
}

}  // namespace quorvance
