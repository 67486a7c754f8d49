#pragma once

#include <cstdint>
#include <string>

#include "base/json.h"

namespace quorvance {

/// The running session as requests carry it: made when a payload needs it, not kept.
struct Session {
  std::string idSession;
  /// Milliseconds since 1970.
  std::int64_t timeSession = 0;

  Json getJson() const;
  /// Puts it under "session" of a body. Where it stands there already nothing is written; another
  /// value is replaced in its place.
  void putInto(Json& body) const;
};

}  // namespace quorvance
