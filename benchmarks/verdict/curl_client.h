#pragma once

#include <string>

#include "benchmarks/verdict/measure.h"

namespace quorvance {

/// The least that anybody does for a verdict: the body is built as a JSON value with room for its
/// members and written, libcurl posts it on a kept connection, the reply is parsed. One thread.
class CurlClient {
 public:
  /// `url` of the request; `body` is the text that is sent each time.
  CurlClient(std::string url, std::string body);

  /// Microseconds of each exchange, one after another.
  Figures inTurn(int count) const;
  /// Exchanges a second with so many in flight.
  double perSecond(int count, int inFlight) const;
  /// Microseconds of each building of the body's value alone.
  Figures buildings(int count) const;

 private:
  const std::string url_;
  const std::string body_;
};

}  // namespace quorvance
