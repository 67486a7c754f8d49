// The first line of the input chooses the kind of reply, the rest is its body.

#include <array>
#include <optional>
#include <string>

#include "fuzz/fuzz_input.h"
#include "network/call_outcome.h"
#include "network/risk_verdict.h"

using quorvance::require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static constexpr std::array<std::optional<int>, 6> kStatuses = {200, std::nullopt, 201,
                                                                  204, 301,          500};
  std::string_view body = quorvance::textOfInput(data, size);
  const std::string_view kind = quorvance::takeLine(body);
  quorvance::HttpReply reply;
  reply.status = kStatuses[kind.size() % kStatuses.size()];
  reply.body = std::string(body);
  const auto outcome = quorvance::decideOutcome(std::move(reply), "R-1", "https://risk.test/");
  const quorvance::RiskVerdict verdict = quorvance::readVerdict(outcome.response);
  const auto level = static_cast<int>(verdict.risk.riskLevel);
  require(level >= -2 && level <= 3, "a level is one of the vocabulary");
  require(outcome.response.succeeded() || !verdict.hasLevel, "a failed call tells no level");
  static_cast<void>(quorvance::reasonOf(outcome.response));
  return 0;
}
