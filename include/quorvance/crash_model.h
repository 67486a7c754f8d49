#pragma once

#include "quorvance/standard_library.h"

#include <cstdint>
#include <string>

namespace quorvance {

enum class CrashModelType : std::int64_t { signal = 0, exception = 1 };

/// One crash, in texts; an unknown version is empty.
struct CrashModel {
  CrashModelType type = CrashModelType::signal;
  /// Name of the signal or of the exception.
  std::string name;
  std::string reason;
  /// Version of the library.
  std::string sdkVer;
  /// Version of the operating system.
  std::string iosVer;
  std::string devModel;
  /// Symbols of the crashing thread's call stack, one a line.
  std::string callStack;
  /// The catcher has dealt with the report (it is kept, or its category is full): a delegate need
  /// not store it. The manager stores every model without this mark.
  bool isStored = false;
};

}  // namespace quorvance
