#include "test/crash/watched_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <fstream>
#include <sstream>
#include <utility>

namespace quorvance {
namespace {

// Only a process that hangs is waited for so long.
constexpr int kEndPatienceMilliseconds = 20'000;
constexpr int kWordsMode = 0600;

std::int64_t nanosecondsNow() {
  timespec now = {};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return std::int64_t{now.tv_sec} * 1'000'000'000 + now.tv_nsec;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

pid_t startProcess(std::vector<std::string>& command, const ProcessWords& words,
                   std::vector<std::string>& environment) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  constexpr int kFlags = O_WRONLY | O_CREAT | O_TRUNC;
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, words.output.c_str(), kFlags,
                                   kWordsMode);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, words.complaints.c_str(), kFlags,
                                   kWordsMode);
  pid_t process = -1;
  const int error = posix_spawn(&process, command.front().c_str(), &actions, nullptr,
                                pointersTo(command).data(), pointersTo(environment).data());
  posix_spawn_file_actions_destroy(&actions);
  return error == 0 ? process : -1;
}

bool endsInTime(pid_t process) {
  const int handle = static_cast<int>(syscall(SYS_pidfd_open, process, 0));
  pollfd ended = {handle, POLLIN, 0};
  const bool inTime = poll(&ended, 1, kEndPatienceMilliseconds) == 1;
  close(handle);
  return inTime;
}

}  // namespace

ProcessEnd runToItsEnd(std::vector<std::string> command, const ProcessWords& words,
                       std::vector<std::string> environment) {
  for (char** entry = environ; *entry != nullptr; ++entry) environment.emplace_back(*entry);
  ProcessEnd end;
  const std::int64_t start = nanosecondsNow();
  const pid_t process = startProcess(command, words, environment);
  if (process < 0) return end;
  end.wasHanging = !endsInTime(process);
  if (end.wasHanging) kill(process, SIGKILL);
  int status = 0;
  waitpid(process, &status, 0);
  end.endTime = nanosecondsNow();
  end.milliseconds = (end.endTime - start) / 1'000'000;
  if (WIFSIGNALED(status)) end.signal = WTERMSIG(status);
  if (WIFEXITED(status)) end.exitStatus = WEXITSTATUS(status);
  return end;
}

std::string textOfFile(const std::string& path) {
  std::ostringstream text;
  const std::ifstream file(path, std::ios::binary);
  text << file.rdbuf();
  return std::move(text).str();
}

}  // namespace quorvance
