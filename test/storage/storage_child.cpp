// storage_child KIND FOLDER [ARGUMENT]: a host's process with its data in FOLDER, which tells on
// the standard output what is on the disk and then lives until it is killed.
//
//   store NAME     keeps reports and state: "report FILE", "state NUMBER", at last "done"; "late"
//                  when a report may have been kept without a turn
//   upload URL     starts up against this server

#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <utility>

#include "platform/testing/test_world.h"
#include "quorvance/quorvance.h"
#include "test/watched_documents_test_support.h"

namespace quorvance {
namespace {

constexpr int kReports = 40;
/// A store that has waited so long for its turn among the processes goes on without it.
constexpr std::chrono::seconds kMaxTurnWait{1};

// Short enough for a pipe to take it whole, also from two threads.
void say(const std::string& line) {
  const std::string text = line + "\n";
  if (write(STDOUT_FILENO, text.data(), text.size()) < 0) std::_Exit(EXIT_FAILURE);
}

/// The real folder; says which reports it has taken.
class TellingDocuments : public WatchedDocuments {
 public:
  using WatchedDocuments::WatchedDocuments;
  std::optional<PlatformError> write(const std::string& name, std::string_view bytes) override {
    auto error = WatchedDocuments::write(name, bytes);
    if (!error) say("report " + name);
    return error;
  }
};

Platform linuxPlatformIn(const std::string& folder) {
  LinuxPlatformOptions options;
  options.dataFolder = folder;
  return makeLinuxPlatform(std::move(options));
}

void waitForFileLane(const Platform& platform) {
  std::promise<void> done;
  platform.backgroundQueue->post(WorkLane::files, [&] { done.set_value(); });
  done.get_future().wait();
}

void storeReports(QuorvanceManager& manager) {
  CrashModel crash;
  crash.callStack = std::string(3000, 'x');
  for (int i = 0; i < kReports; ++i) {
    const auto start = std::chrono::steady_clock::now();
    manager.crashEyeDidCatchCrash(crash);
    if (std::chrono::steady_clock::now() - start >= kMaxTurnWait) say("late");
  }
}

[[noreturn]] void storeForEver(const Platform& real, const std::string& owner) {
  TestWorld doubles;
  Platform platform = doubles.platform();
  platform.documents = std::make_shared<TellingDocuments>(real.documents);
  QuorvanceManager manager(platform);
  std::thread reports([&] {
    storeReports(manager);
    say("done");
  });
  for (int i = 0;; ++i) {
    real.defaults->write(owner, std::to_string(i));
    real.defaults->write("user_id", owner + std::string(2000, 'x'));
    waitForFileLane(real);
    // Who has waited for the lock in vain writes with the next use.
    if (real.defaults->isSynchronized()) say("state " + std::to_string(i));
  }
}

void run(const std::string& kind, const Platform& platform, const std::string& argument) {
  if (kind == "store") storeForEver(platform, argument);
  QuorvanceManager manager(platform);
  manager.setupWithServerUrl(argument, "anna");
  manager.initializeDeviceId();
  for (;;) pause();
}

}  // namespace
}  // namespace quorvance

int main(int count, char** arguments) {
  if (count != 4) return EXIT_FAILURE;
  quorvance::run(arguments[1], quorvance::linuxPlatformIn(arguments[2]), arguments[3]);
}
