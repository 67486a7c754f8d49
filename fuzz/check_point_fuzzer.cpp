// A checkpoint that was read and written comes back from its own JSON unchanged.

#include <memory>
#include <string>

#include "base/json.h"
#include "fuzz/fuzz_input.h"
#include "quorvance/check_point.h"

using quorvance::CheckPoint;
using quorvance::Json;
using quorvance::require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto value = quorvance::parseJson(quorvance::textOfInput(data, size));
  if (!value) return 0;
  quorvance::PlatformError error;
  const std::unique_ptr<CheckPoint> checkPoint = CheckPoint::parse(*value, &error);
  if (!checkPoint) return 0;
  const Json written = checkPoint->getJson();
  const std::unique_ptr<CheckPoint> again = CheckPoint::parse(written);
  require(again != nullptr, "what a checkpoint writes is a checkpoint");
  require(quorvance::writeJson(again->getJson()) == quorvance::writeJson(written),
          "and is written the same again");
  return 0;
}
