#include "platform/linux/permissions/camera_devices.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <string>
#include <string_view>
#include <utility>

#include "platform/linux/storage/private_files.h"

namespace quorvance {
namespace {

constexpr std::string_view kDevices = "/dev";
constexpr std::string_view kVideo = "video";

AuthorizationStatus statusOfDevices(const RootFiles& files) {
  auto status = AuthorizationStatus::notDetermined;
  for (const std::string& name : files.names(kDevices)) {
    if (!name.starts_with(kVideo)) continue;
    const std::string path = files.underRoot(std::string(kDevices) + "/" + name);
    // With the rights that an open would have.
    if (faccessat(AT_FDCWD, path.c_str(), R_OK | W_OK, AT_EACCESS) == 0) {
      return AuthorizationStatus::authorized;
    }
    status = AuthorizationStatus::denied;
  }
  return status;
}

/// Closed when the kernel has none to give.
FileDescriptor openFolderChanges(const std::string& folder) {
  FileDescriptor changes(inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
  constexpr std::uint32_t kKinds = IN_CREATE | IN_DELETE | IN_ATTRIB | IN_MOVED_FROM | IN_MOVED_TO;
  if (changes.isOpen() && inotify_add_watch(changes.number(), folder.c_str(), kKinds) < 0) {
    changes.reset();
  }
  return changes;
}

/// Takes what has come; whether any of it was about a video device, or was lost.
bool takeVideoChange(int descriptor) {
  alignas(inotify_event) std::array<char, 4096> buffer;
  bool isFound = false;
  for (;;) {
    const ssize_t length = read(descriptor, buffer.data(), buffer.size());
    if (length <= 0) return isFound;
    for (const char* at = buffer.data(); at < buffer.data() + length;) {
      const auto* const event = reinterpret_cast<const inotify_event*>(at);
      const std::string_view name = event->len > 0 ? event->name : "";
      isFound = isFound || name.starts_with(kVideo) || (event->mask & IN_Q_OVERFLOW) != 0;
      at += sizeof(inotify_event) + event->len;
    }
  }
}

}  // namespace

struct CameraDevices::State {
  explicit State(RootFiles usedFiles) : files(std::move(usedFiles)) {}

  const RootFiles files;
  std::atomic<bool> isWatching{false};
  std::atomic<AuthorizationStatus> status{AuthorizationStatus::notDetermined};

  std::atomic<bool> isRead{false};

  void readAgain() {
    status = statusOfDevices(files);
    isRead = true;
  }
};

class CameraDevices::FolderWatch : public Watch {
 public:
  explicit FolderWatch(std::shared_ptr<State> state)
      : state_(std::move(state)), changes_(openFolderChanges(state_->files.underRoot(kDevices))) {}

  Need need() override { return {.descriptor = changes_.number(), .events = POLLIN}; }
  bool run() override {
    if (takeVideoChange(changes_.number())) state_->readAgain();
    return true;
  }
  bool isOpen() const { return changes_.isOpen(); }

 private:
  const std::shared_ptr<State> state_;
  const FileDescriptor changes_;
};

CameraDevices::CameraDevices(RootFiles files, std::shared_ptr<WatchThread> thread)
    : state_(std::make_shared<State>(std::move(files))), thread_(std::move(thread)) {}

CameraDevices::~CameraDevices() = default;

bool CameraDevices::hasRead() const { return state_->isRead; }

AuthorizationStatus CameraDevices::status() {
  if (!state_->isWatching.load(std::memory_order_relaxed) && !state_->isWatching.exchange(true)) {
    thread_->post([state = state_, thread = std::weak_ptr(thread_)] {
      // Before the reading, so that no change is missed.
      const auto watch = std::make_shared<FolderWatch>(state);
      state->readAgain();
      const auto watchThread = thread.lock();
      if (watchThread && watch->isOpen()) watchThread->add(watch);
    });
  }
  return state_->status;
}

}  // namespace quorvance
