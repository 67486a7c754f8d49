// A file or folder of the demo's own that goes with it, however it ends.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>

namespace demo_host {

// Removed by the destructor; where the process dies before, of Ctrl-C above all, by a helper
// process that waits for nothing else. The destructor waits for that one, too.
class TemporaryPath {
 public:
  enum class Kind { file, folder };

  // `name` ends in "XXXXXX". Throws RunError.
  TemporaryPath(Kind kind, const std::string& name);
  ~TemporaryPath();
  TemporaryPath(const TemporaryPath&) = delete;
  TemporaryPath& operator=(const TemporaryPath&) = delete;

  const std::filesystem::path& path() const { return path_; }

 private:
  void startHelper();

  std::filesystem::path path_;
  // Its end, by whatever cause, is what the helper waits for.
  int lifeline_ = -1;
  pid_t helper_ = -1;
};

}  // namespace demo_host
