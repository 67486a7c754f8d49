#include "apps/risk_server/captures/capture_file.h"

namespace risk_server {

Capture loadCapture(const std::filesystem::path& file, const Contract& contract) {
  const std::string text = loadServerText(file, kMaxCaptureBytes);
  try {
    return readCapture(text, contract);
  } catch (const InputError& error) {
    throw InputError(file.string() + ": " + error.what());
  }
}

}  // namespace risk_server
