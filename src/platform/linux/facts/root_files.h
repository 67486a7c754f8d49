#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorvance {

/// The text without what kernel files end with (line ends, NULs) and without spaces around it.
/// Absent when nothing is left, and for what nobody can read: control characters, text that is not
/// UTF-8, or more than a name has.
std::optional<std::string> cleanFact(std::string_view text);

/// The small files in which a system describes itself, under a root folder ("/" save in tests and
/// sandboxes). Immutable; nothing is kept, every question reads anew.
class RootFiles {
 public:
  /// A longer file counts as missing.
  static constexpr std::size_t kMaxFactBytes = 64 * 1024;

  explicit RootFiles(std::string root) : root_(std::move(root)) {}

  /// The whole text, absent when the file cannot be read or is longer. Paths begin with "/".
  std::optional<std::string> text(std::string_view path,
                                  std::size_t maxBytes = kMaxFactBytes) const;
  /// As above, for files with one fact: cleaned.
  std::optional<std::string> fact(std::string_view path) const;
  /// The names in a folder, sorted; none when it cannot be read. Of a folder with more names than a
  /// system has devices, the rest is left out.
  std::vector<std::string> names(std::string_view path) const;
  /// Where a symbolic link points to, as it is written there.
  std::optional<std::string> linkTarget(std::string_view path) const;
  /// The path as the kernel is asked for it.
  std::string underRoot(std::string_view path) const;

 private:
  const std::string root_;
};

}  // namespace quorvance
