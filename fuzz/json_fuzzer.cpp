// What the reader takes the JSON library takes too, and it comes back from the writer unchanged.

#include <optional>
#include <string>

#include "base/json.h"
#include "fuzz/fuzz_input.h"

using quorvance::Json;
using quorvance::require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text = quorvance::textOfInput(data, size);
  const std::optional<Json> value = quorvance::parseJson(text);
  if (!value) return 0;
  require(Json::accept(text), "what is read is JSON");
  const std::optional<std::string> written = quorvance::writeJson(*value);
  require(written.has_value(), "what is read can be written");
  const std::optional<Json> again = quorvance::parseJson(*written);
  require(again && *again == *value, "what is written reads back as the same");
  require(quorvance::writeJson(*again) == written, "and is written the same again");
  return 0;
}
