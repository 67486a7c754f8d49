#include "apps/demo_host/state_folder.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <future>
#include <string>
#include <system_error>
#include <utility>

#include "apps/demo_host/demo_errors.h"

namespace demo_host {

void checkStateFolder(const std::filesystem::path& folder) {
  namespace fs = std::filesystem;
  const auto fail = [&](const std::string& reason) {
    throw InputError("--data-folder: " + folder.string() + ": " + reason);
  };
  std::error_code error;
  const bool isNew = fs::create_directories(folder, error);
  if (error) fail(error.message());
  if (isNew) fs::permissions(folder, fs::perms::owner_all, error);
  struct stat status = {};
  if (stat(folder.c_str(), &status) != 0) fail(std::generic_category().message(errno));
  if (status.st_uid != geteuid()) fail("it belongs to another user");
  if (access(folder.c_str(), R_OK | W_OK | X_OK) != 0) fail(std::generic_category().message(errno));
}

StateFolder::StateFolder(const std::optional<std::filesystem::path>& given) {
  std::error_code error;
  if (given) {
    path_ = std::filesystem::absolute(*given, error);
  } else {
    path_ = own_.emplace(TemporaryPath::Kind::folder, "quorvance-demo-XXXXXX").path();
  }
  if (error) throw RunError("no folder for the library's state: " + error.message());
}

StateFolder::~StateFolder() { waitForWrites(); }

void StateFolder::isWrittenBy(std::shared_ptr<quorvance::BackgroundQueue> queue) {
  queue_ = std::move(queue);
}

void StateFolder::waitForWrites() const {
  if (!queue_) return;
  // The lane is first in, first out: when this task runs, everything before it is written.
  auto reached = std::make_shared<std::promise<void>>();
  const std::future<void> future = reached->get_future();
  queue_->post(quorvance::WorkLane::files, [reached] { reached->set_value(); });
  future.wait_for(kLastWritesTime);
}

}  // namespace demo_host
