#pragma once

#include <chrono>
#include <string_view>

namespace quorvance {

/// Debug mode, in which the magnetic field is sampled too and each motion sample is printed as it
/// is taken: signals them. Takes the debug lines; one at a time.
class TakenSamples {
 public:
  TakenSamples();
  ~TakenSamples();
  TakenSamples(const TakenSamples&) = delete;
  TakenSamples& operator=(const TakenSamples&) = delete;

  /// Waits, in real time, for one more sample of the sensor, by its word in the line ("mag"); false
  /// when the timeout comes first.
  bool waitForAnother(std::string_view sensor, std::chrono::seconds timeout) const;
};

}  // namespace quorvance
