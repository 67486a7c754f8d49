#include "apps/demo_host/server_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>
#include <system_error>

#include "apps/demo_host/demo_errors.h"
#include "apps/demo_host/server_url.h"

namespace demo_host {
namespace {

constexpr std::string_view kReadyPrefix = "risk server ready at ";
constexpr std::string_view kConsolePrefix = "console at ";
constexpr std::size_t kMaxLine = 1024;
constexpr int kCannotExecute = 127;

using SteadyClock = std::chrono::steady_clock;

// Milliseconds for poll(2); 0 when the time is over.
int pollTime(SteadyClock::time_point deadline) {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - SteadyClock::now());
  return left.count() > 0 ? static_cast<int>(left.count()) : 0;
}

bool waitReadable(int descriptor, SteadyClock::time_point deadline) {
  pollfd watched{descriptor, POLLIN, 0};
  int ready = 0;
  do {
    ready = poll(&watched, 1, pollTime(deadline));
  } while (ready < 0 && errno == EINTR);
  return ready > 0;
}

// Between fork and exec: only what is safe after a fork. posix_spawn could not tie the child's life
// to its parent's.
[[noreturn]] void becomeServer(char* const* command, int output, pid_t parent) {
  prctl(PR_SET_PDEATHSIG, SIGTERM);
  // The parent may have died before the line above.
  if (getppid() != parent || dup2(output, STDOUT_FILENO) < 0) _exit(kCannotExecute);
  execv(command[0], command);
  _exit(kCannotExecute);
}

// Empty when the line has another beginning.
std::string_view behindPrefix(std::string_view line, std::string_view prefix) {
  return line.starts_with(prefix) ? line.substr(prefix.size()) : std::string_view();
}

std::string describeEnd(int status) {
  if (WIFEXITED(status)) return "exit status " + std::to_string(WEXITSTATUS(status));
  if (WIFSIGNALED(status)) return "signal " + std::to_string(WTERMSIG(status));
  return "unknown end";
}

[[noreturn]] void failOf(const char* operation) {
  throw RunError(std::string(operation) + ": " + std::generic_category().message(errno));
}

}  // namespace

ServerProcess::ServerProcess(const std::filesystem::path& program,
                             const std::vector<std::string>& arguments)
    : program_(program.string()) {
  std::vector<std::string> command = {program_};
  command.insert(command.end(), arguments.begin(), arguments.end());
  start(command);
  // From here on the child must not outlive a failure, which the destructor would not see.
  const std::string line = readLine();
  const std::string_view url = behindPrefix(line, kReadyPrefix);
  if (url.empty() || !faultOfServerUrl(url).empty()) failUnready("it said \"" + line + "\"");
  url_ = withLastSlash(std::string(url));
}

std::string ServerProcess::readConsoleUrl() {
  const std::string line = readLine();
  const std::string_view url = behindPrefix(line, kConsolePrefix);
  if (url.empty() || !faultOfServerUrl(url).empty()) failUnready("it said \"" + line + "\"");
  return std::string(url);
}

ServerProcess::~ServerProcess() { stop(); }

void ServerProcess::start(const std::vector<std::string>& command) {
  std::vector<char*> words;
  words.reserve(command.size() + 1);
  // execv takes what it does not change as char*.
  for (const std::string& word : command) words.push_back(const_cast<char*>(word.c_str()));
  words.push_back(nullptr);
  int ends[2] = {-1, -1};
  if (pipe2(ends, O_CLOEXEC) != 0) failOf("pipe");
  const pid_t parent = getpid();
  child_ = fork();
  if (child_ == 0) becomeServer(words.data(), ends[1], parent);
  close(ends[1]);
  output_ = ends[0];
  if (child_ < 0) {
    close(output_);
    failOf("fork");
  }
}

std::string ServerProcess::readLine() {
  const auto deadline = SteadyClock::now() + kServerStartTime;
  std::string line;
  while (line.size() < kMaxLine) {
    if (!waitReadable(output_, deadline)) failUnready("it was not ready in time");
    char c = 0;
    const ssize_t count = read(output_, &c, 1);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) {
      throw RunError("the risk server " + program_ + " ended before it was ready (" +
                     describeEnd(stop()) + ")");
    }
    if (c == '\n') return line;
    line += c;
  }
  failUnready("its line has no end");
}

void ServerProcess::failUnready(const std::string& reason) {
  stop();
  throw RunError("the risk server " + program_ + " cannot be used: " + reason);
}

int ServerProcess::stop() {
  if (child_ < 0) return 0;
  kill(child_, SIGTERM);
  // Readable once the child has ended. By number, since glibc's header knows no C++.
  const int descriptor = static_cast<int>(syscall(SYS_pidfd_open, child_, 0));
  if (!waitReadable(descriptor, SteadyClock::now() + kServerStopTime)) kill(child_, SIGKILL);
  if (descriptor >= 0) close(descriptor);
  int status = 0;
  while (waitpid(child_, &status, 0) < 0 && errno == EINTR) {
  }
  close(output_);
  child_ = -1;
  return status;
}

}  // namespace demo_host
