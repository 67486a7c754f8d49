#include "apps/risk_server/captures/capture_check.h"

#include "apps/risk_server/captures/capture.h"
#include "apps/risk_server/captures/capture_file.h"

namespace risk_server {
namespace {

constexpr int kKept = 0;
constexpr int kBroken = 1;

std::size_t printViolations(const CapturedExchange& captured, const std::string& file,
                            std::ostream& out) {
  const Exchange& exchange = captured.exchange;
  const std::string begin = file + ":" + captured.where + ": " + exchange.path + ": ";
  if (exchange.violations.empty()) {
    if (exchange.fault.empty()) return 0;
    out << begin << exchange.fault << '\n';
    return 1;
  }
  for (const Mismatch& violation : exchange.violations) out << begin << violation.text() << '\n';
  return exchange.violations.size();
}

}  // namespace

int checkCapture(const std::filesystem::path& file, const Contract& contract, std::ostream& out) {
  const Capture capture = loadCapture(file, contract);
  std::size_t violations = 0;
  for (const CapturedExchange& captured : capture.exchanges) {
    violations += printViolations(captured, file.string(), out);
  }
  out << capture.exchanges.size() << " calls, " << violations << " violations";
  if (capture.skipped > 0) out << ", " << capture.skipped << " entries that are no service calls";
  out << '\n';
  return violations == 0 && !capture.exchanges.empty() ? kKept : kBroken;
}

}  // namespace risk_server
