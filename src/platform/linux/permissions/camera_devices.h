#pragma once

#include <memory>

#include "platform/linux/facts/root_files.h"
#include "platform/linux/threads/watch_thread.h"
#include "quorvance/platform/authorization.h"

namespace quorvance {

/// Whether this process may open a camera, by the access rights of the video devices; a refused one
/// is denied, none at all is not determined. The devices are watched in the background from the
/// first question on. Answers at once, from memory. Any thread.
class CameraDevices {
 public:
  CameraDevices(RootFiles files, std::shared_ptr<WatchThread> thread);
  ~CameraDevices();

  /// Not determined until the first reading has ended.
  AuthorizationStatus status();
  /// Whether that has ended.
  bool hasRead() const;

 private:
  struct State;
  class FolderWatch;

  // Shared with the watch, which may outlive this.
  const std::shared_ptr<State> state_;
  const std::shared_ptr<WatchThread> thread_;
};

}  // namespace quorvance
