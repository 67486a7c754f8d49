#pragma once

#include <string>

namespace quorvance {

/// An exception that nobody catches, in texts.
struct UncaughtException {
  /// Its type, as written in C++.
  std::string name;
  /// what() of a std::exception, a thrown text, otherwise empty.
  std::string reason;
};

/// The exception that is ending the process; false when it ends for another reason. For a terminate
/// handler.
bool describeUncaughtException(UncaughtException& exception);

}  // namespace quorvance
