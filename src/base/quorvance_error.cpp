#include "quorvance/quorvance_error.h"

namespace quorvance {

std::string QuorvanceError::description() { return "serverUrl can't be empty"; }

PlatformError QuorvanceError::platformError() {
  return {"QuorvanceError", 0, description(), std::nullopt};
}

}  // namespace quorvance
