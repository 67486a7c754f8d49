#pragma once

#include <cstddef>
#include <functional>
#include <set>
#include <string>
#include <string_view>

#include "quorvance/platform/http_options.h"

namespace quorvance {

/// What is wrong with the options as such, in words; empty when nothing is. Files are not looked
/// at.
std::string faultOfOptions(const HttpOptions& options);

/// Whether a URL that can be sent to leaves this machine in plain text.
bool isPlainToOthers(std::string_view url);

/// What the options say of single requests. The session's thread only.
class HttpPolicy {
 public:
  /// So many servers are told of; a URL of the host's own making must not fill the memory.
  static constexpr std::size_t kMaxWarned = 16;

  explicit HttpPolicy(HttpOptions options);

  const HttpOptions& options() const { return options_; }
  /// Why the request must not be sent, or empty. Logs each reason and each server that is reached
  /// in plain text once. The URL can be sent to.
  std::string faultOf(std::string_view url);

 private:
  std::string faultOfPlain(std::string_view url);
  bool isNews(std::string_view what);

  const HttpOptions options_;
  const std::string optionsFault_;
  std::set<std::string, std::less<>> told_;
};

}  // namespace quorvance
