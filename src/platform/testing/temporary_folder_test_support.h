#pragma once

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <system_error>

namespace quorvance {

/// A new folder that is removed with all that is in it.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string path = (std::filesystem::temp_directory_path() / "quorvance-XXXXXX").string();
    if (mkdtemp(path.data()) != nullptr) path_ = path;
  }
  ~TemporaryFolder() {
    std::error_code ignored;  // what cannot be removed fails no test
    if (!path_.empty()) std::filesystem::remove_all(path_, ignored);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::string& path() const { return path_; }
  std::string at(std::string_view name) const { return path_ + "/" + std::string(name); }

  /// Makes the file and the folders above it.
  void put(std::string_view name, std::string_view bytes) const {
    std::filesystem::create_directories(std::filesystem::path(at(name)).parent_path());
    std::ofstream(at(name), std::ios::binary) << bytes;
  }
  /// Empty for a missing file.
  std::string get(std::string_view name) const {
    std::ostringstream bytes;
    bytes << std::ifstream(at(name), std::ios::binary).rdbuf();
    return bytes.str();
  }
  unsigned permissionsOf(std::string_view name) const {
    return static_cast<unsigned>(std::filesystem::status(at(name)).permissions());
  }

 private:
  std::string path_;
};

}  // namespace quorvance
