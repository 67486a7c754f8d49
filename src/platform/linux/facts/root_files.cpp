#include "platform/linux/facts/root_files.h"

#include <dirent.h>
#include <limits.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <memory>

#include "base/text.h"
#include "platform/linux/storage/private_files.h"

namespace quorvance {
namespace {

constexpr std::size_t kMaxNames = 4096;
/// No name is longer.
constexpr std::size_t kMaxTextBytes = 1024;

struct DirectoryCloser {
  void operator()(DIR* directory) const { closedir(directory); }
};

}  // namespace

std::optional<std::string> cleanFact(std::string_view text) {
  constexpr std::string_view kBlank(" \t\r\n\0", 5);
  const std::size_t first = text.find_first_not_of(kBlank);
  if (first == std::string_view::npos) return std::nullopt;
  text = text.substr(first, text.find_last_not_of(kBlank) - first + 1);
  const bool isFact = text.size() <= kMaxTextBytes && isReadableText(text);
  return isFact ? std::optional<std::string>(text) : std::nullopt;
}

std::optional<std::string> RootFiles::text(std::string_view path, std::size_t maxBytes) const {
  SmallFile file = readSmallFile(underRoot(path), maxBytes);
  if (file.outcome != SmallFile::Outcome::whole) return std::nullopt;
  return std::move(file.bytes);
}

std::optional<std::string> RootFiles::fact(std::string_view path) const {
  const std::optional<std::string> whole = text(path);
  return whole ? cleanFact(*whole) : std::nullopt;
}

// Not by the standard library's iterator, which ends the process when it finds no memory.
std::vector<std::string> RootFiles::names(std::string_view path) const {
  std::vector<std::string> names;
  const std::unique_ptr<DIR, DirectoryCloser> directory(opendir(underRoot(path).c_str()));
  while (directory && names.size() < kMaxNames) {
    const dirent* const entry = readdir(directory.get());
    if (entry == nullptr) break;
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") names.emplace_back(name);
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::optional<std::string> RootFiles::linkTarget(std::string_view path) const {
  std::array<char, PATH_MAX> target;
  const ssize_t length = readlink(underRoot(path).c_str(), target.data(), target.size());
  // A target that fills the buffer may have been cut off.
  if (length <= 0 || static_cast<std::size_t>(length) == target.size()) return std::nullopt;
  return std::string(target.data(), static_cast<std::size_t>(length));
}

std::string RootFiles::underRoot(std::string_view path) const {
  std::string whole = root_;
  while (whole.ends_with('/')) whole.pop_back();
  return whole.append(path);
}

}  // namespace quorvance
