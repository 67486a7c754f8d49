#pragma once

#include <stdlib.h>

#include <filesystem>
#include <string>
#include <system_error>

namespace quorvance {

/// A new folder that is removed with all that is in it.
class ScratchFolder {
 public:
  ScratchFolder() {
    path_ = (std::filesystem::temp_directory_path() / "quorvance-test-XXXXXX").string();
    if (mkdtemp(path_.data()) == nullptr) path_.clear();
  }
  ~ScratchFolder() {
    std::error_code ignored;  // what cannot be removed fails no test
    if (!path_.empty()) std::filesystem::remove_all(path_, ignored);
  }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

}  // namespace quorvance
