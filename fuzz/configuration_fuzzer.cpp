// Whatever the server sends as a configuration.

#include "base/json.h"
#include "fuzz/fuzz_input.h"
#include "state/sdk_config.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto value = quorvance::parseJson(quorvance::textOfInput(data, size));
  if (value && value->is_object()) static_cast<void>(quorvance::SdkConfig::fromJson(*value));
  return 0;
}
