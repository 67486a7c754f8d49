// A risk server of the demo's own: another program, started and ended with it.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

namespace demo_host {

inline constexpr std::chrono::milliseconds kServerStartTime = std::chrono::seconds(10);
inline constexpr std::chrono::milliseconds kServerStopTime = std::chrono::seconds(5);

// Started by the constructor, ready when it returns, stopped by the destructor; also stopped by the
// kernel when the thread that started it dies. One thread.
class ServerProcess {
 public:
  // Throws RunError when the program cannot be started, ends, or is not ready in time.
  ServerProcess(const std::filesystem::path& program, const std::vector<std::string>& arguments);
  ~ServerProcess();
  ServerProcess(const ServerProcess&) = delete;
  ServerProcess& operator=(const ServerProcess&) = delete;

  // As the program announced it.
  const std::string& url() const { return url_; }
  // Reads the line behind that: where the console is. Once; throws as the constructor does.
  std::string readConsoleUrl();

 private:
  void start(const std::vector<std::string>& command);
  std::string readLine();
  [[noreturn]] void failUnready(const std::string& reason);
  // Asks the child to end, makes it when it does not; its wait status. Once.
  int stop();

  std::string program_;
  pid_t child_ = -1;
  int output_ = -1;
  std::string url_;
};

}  // namespace demo_host
