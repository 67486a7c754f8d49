#pragma once

#include <memory>
#include <string>

#include "benchmarks/verdict/loopback_server.h"
#include "benchmarks/verdict/measure.h"
#include "quorvance/quorvance_manager.h"

namespace quorvance {

/// The library as an application has it: on the real platform, through its public headers, with a
/// session that the server has accepted.
class LibraryClient {
 public:
  /// What the library keeps lies in `folder`.
  LibraryClient(const LoopbackServer& server, const std::string& folder);

  /// Waits until nothing has changed in the folder for a while, as is usual.
  static void settle();

  /// Microseconds of each call on the host's thread, then of each verdict from its call on: one
  /// after another.
  Figures inTurn(int count);
  /// Verdicts a second with so many in flight.
  double perSecond(int count, int inFlight);

  /// Microseconds for making the platform and the manager, and for the setup call.
  const Figures& start() const { return start_; }

 private:
  Figures start_;
  std::unique_ptr<QuorvanceManager> manager_;
};

/// Reports of the categories that a verdict does not ask to upload, as many as are kept.
void storeReports(const std::string& folder);

}  // namespace quorvance
