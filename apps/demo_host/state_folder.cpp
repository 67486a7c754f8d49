#include "apps/demo_host/state_folder.h"

#include <cerrno>
#include <cstdlib>
#include <future>
#include <string>
#include <system_error>
#include <utility>

#include "apps/demo_host/demo_errors.h"

namespace demo_host {

StateFolder::StateFolder(const std::optional<std::filesystem::path>& given) {
  std::error_code error;
  if (given) {
    path_ = std::filesystem::absolute(*given, error);
  } else {
    std::string name = (std::filesystem::temp_directory_path(error) / "quorvance-demo-XXXXXX");
    if (!error && mkdtemp(name.data()) == nullptr) {
      error = std::error_code(errno, std::generic_category());
    }
    path_ = name;
    isOwn_ = true;
  }
  if (error) throw RunError("no folder for the library's state: " + error.message());
}

StateFolder::~StateFolder() {
  waitForWrites();
  std::error_code ignored;  // what is left lies among other temporary files
  if (isOwn_) std::filesystem::remove_all(path_, ignored);
}

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
