#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>

namespace quorvance {

/// The hidden name of a document that is being written: whose work it is, and what it will become.
///
///     .report-new-1234-56789-crashUUID.json      the first bytes of a document
///     .report-again-1234-56789-crashUUID.json    takes the place of what is there
///
/// A process is told by its number and by when it was started, in ticks since the machine was.
struct TemporaryName {
  pid_t process = 0;
  std::string processStart;
  bool isReplacement = false;
  std::string document;

  static constexpr std::string_view kPrefix = ".report-";

  /// For this process to write under.
  static std::string make(const std::string& document, bool isReplacement);
  /// Absent for a name of another form.
  static std::optional<TemporaryName> parse(std::string_view name);
  /// False once its process has died, be there another of its number.
  bool isProcessAlive() const;
};

}  // namespace quorvance
