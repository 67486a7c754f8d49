// What can go wrong in the demo, by the exit status that it ends with.
#pragma once

#include <stdexcept>

namespace demo_host {

// The exit statuses.
inline constexpr int kPlayedAsExpected = 0;
inline constexpr int kRunFailed = 1;
inline constexpr int kWrongInput = 2;

// The command line or a file is wrong; nothing was started. what() names the place and the fault.
class InputError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The journey could not be played to its end.
class RunError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace demo_host
