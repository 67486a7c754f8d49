#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <future>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/bus/bus_place.h"
#include "platform/linux/threads/watch_thread.h"
#include "platform/testing/temporary_folder_test_support.h"

namespace quorvance {

/// The program that plays services; said by the build.
extern const char* const kBusMock;

/// A program that is spoken to by lines, and killed at the end.
class TalkingProcess {
 public:
  explicit TalkingProcess(std::vector<std::string> command) {
    std::array<int, 2> input{};
    std::array<int, 2> output{};
    if (pipe2(input.data(), O_CLOEXEC) != 0 || pipe2(output.data(), O_CLOEXEC) != 0) return;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (std::string& word : command) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    posix_spawn(&process_, arguments[0], &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(input[0]);
    close(output[1]);
    input_ = input[1];
    output_ = output[0];
  }
  ~TalkingProcess() {
    signalWith(SIGKILL);
    if (process_ > 0) waitpid(process_, nullptr, 0);
    close(input_);
    close(output_);
  }
  TalkingProcess(const TalkingProcess&) = delete;
  TalkingProcess& operator=(const TalkingProcess&) = delete;

  void say(const std::string& line) const {
    const std::string bytes = line + "\n";
    EXPECT_EQ(write(input_, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
  }
  /// The next line; empty when none comes in time.
  std::string hear() {
    while (heard_.find('\n') == std::string::npos) {
      pollfd polled = {output_, POLLIN, 0};
      std::array<char, 512> buffer{};
      const bool hasCome = poll(&polled, 1, kPatienceMilliseconds) == 1;
      const ssize_t length = hasCome ? read(output_, buffer.data(), buffer.size()) : 0;
      if (length <= 0) return "";
      heard_.append(buffer.data(), static_cast<std::size_t>(length));
    }
    std::string line = heard_.substr(0, heard_.find('\n'));
    heard_.erase(0, line.size() + 1);
    return line;
  }
  void signalWith(int number) const {
    if (process_ > 0) kill(process_, number);
  }

 private:
  static constexpr int kPatienceMilliseconds = 60'000;

  pid_t process_ = -1;
  int input_ = -1;
  int output_ = -1;
  std::string heard_;
};

/// A bus of its own, and a program that plays services on it.
class PrivateBus {
 public:
  PrivateBus() {
    // What the real services keep.
    setenv("XDG_DATA_HOME", folder_.at("data").c_str(), 1);
    folder_.put("services/.keep", "");
    folder_.put("bus.conf",
                "<busconfig><type>session</type><listen>unix:dir=" + folder_.path() +
                    "</listen><servicedir>" + folder_.at("services") +
                    "</servicedir><policy context='default'><allow send_destination='*'/>"
                    "<allow receive_sender='*'/><allow own='*'/></policy></busconfig>");
    // It complains where it may not raise its limits.
    daemon_ = std::make_unique<TalkingProcess>(std::vector<std::string>{
        "/bin/sh", "-c",
        "exec /usr/bin/dbus-daemon --nofork --nopidfile --print-address=1 --config-file=" +
            folder_.at("bus.conf") + " 2>/dev/null"});
    address_ = daemon_->hear();
    mock_ = std::make_unique<TalkingProcess>(
        std::vector<std::string>{"/usr/bin/python3", kBusMock, address_});
    EXPECT_EQ(mock_->hear(), "ready");
  }
  ~PrivateBus() { unsetenv("XDG_DATA_HOME"); }
  PrivateBus(const PrivateBus&) = delete;
  PrivateBus& operator=(const PrivateBus&) = delete;

  /// The timeout is long, for a machine that is busy with other tests.
  BusPlace place(std::chrono::milliseconds timeout = std::chrono::seconds(20)) const {
    return {.address = address_, .timeout = timeout, .pause = {}};
  }
  TalkingProcess& daemon() { return *daemon_; }
  TalkingProcess& mock() { return *mock_; }
  /// Has the mock run a statement, and waits until it has.
  void play(const std::string& statement) {
    mock_->say(statement);
    EXPECT_EQ(mock_->hear(), "done") << statement;
  }
  /// From now on the bus can start the service, by this command.
  void makeStartable(const std::string& name, const std::string& command) {
    folder_.put("services/" + name + ".service",
                "[D-BUS Service]\nName=" + name + "\nExec=" + command + "\n");
    play(
        "bus.get_object('org.freedesktop.DBus', '/').ReloadConfig("
        "dbus_interface='org.freedesktop.DBus')");
  }
  const TemporaryFolder& folder() const { return folder_; }

 private:
  TemporaryFolder folder_;
  std::string address_;
  std::unique_ptr<TalkingProcess> daemon_;
  std::unique_ptr<TalkingProcess> mock_;
};

/// Waits until the condition holds, looking again whenever the thread has handled what had come;
/// false when that takes too long.
template <class Condition>
bool holdsInTime(WatchThread& thread, Condition condition) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    // The second task runs after the thread has looked at all that it waits for.
    const auto handled = std::make_shared<std::promise<void>>();
    thread.post([&thread, handled] { thread.post([handled] { handled->set_value(); }); });
    handled->get_future().wait();
  }
  return true;
}

}  // namespace quorvance
