// What files, variables and displays say of a device.

#include <string>

#include "base/text.h"
#include "device/device_data_collector.h"
#include "fuzz/fuzz_input.h"
#include "platform/linux/facts/assignments.h"
#include "platform/linux/facts/locale_names.h"
#include "platform/linux/facts/time_zone_name.h"
#include "platform/linux/hardware/edid.h"

using quorvance::require;

namespace {

void readLocale(std::string_view text) {
  const quorvance::Assignments assignments = quorvance::parseAssignments(text);
  const auto names = quorvance::localeNamesFrom(
      [&](std::string_view name) { return quorvance::assigned(assignments, name); });
  require(!names.region || !names.region->empty(), "a region that is told is not empty");
  require(!names.language || !names.language->empty(), "a language that is told is not empty");
}

void readTexts(std::string_view text) {
  const std::string mended = quorvance::replaceIllFormedUtf8(text);
  require(quorvance::isUtf8(mended), "mended text is UTF-8");
  require(!quorvance::isUtf8(text) || mended == text, "UTF-8 is not mended");
  require(quorvance::percentEncodeForQuery(text) == quorvance::percentEncodeForQuery(mended),
          "text is mended before it is encoded");
  const auto permissions = quorvance::readPermissionList(text);
  require(quorvance::readPermissionList(quorvance::writePermissionList(permissions)) == permissions,
          "a stored list of permissions reads back as the same");
  static_cast<void>(quorvance::timeZoneOfVariable(text));
  static_cast<void>(quorvance::timeZoneOfPath(text));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text = quorvance::textOfInput(data, size);
  readLocale(text);
  readTexts(text);
  static_cast<void>(quorvance::physicalSizeOf(text));
  return 0;
}
