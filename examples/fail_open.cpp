// Fail open: without a verdict the user gets in. Right where being locked out costs more than the
// risk, for example at a login that is followed by stronger checks.

#include <quorvance/quorvance.h>

#include <chrono>
#include <future>
#include <iostream>
#include <memory>

using namespace quorvance;

namespace {

constexpr std::chrono::seconds kPatience{2};

// Undefined too when no verdict has come in time: the completion may then still run, so it owns
// what it writes to.
RiskLevel riskOf(QuorvanceManager& manager, const CheckPoint& checkPoint) {
  auto answer = std::make_shared<std::promise<RiskLevel>>();
  manager.getRiskForCheckPoint(checkPoint, [answer](Risk risk, std::string, std::string) {
    answer->set_value(risk.riskLevel);
  });
  auto level = answer->get_future();
  if (level.wait_for(kPatience) != std::future_status::ready) return RiskLevel::undefined;
  return level.get();
}

}  // namespace

int main(int argc, char** argv) {
  auto manager = QuorvanceManager::shared();
  manager->setupWithServerUrl(argc > 1 ? argv[1] : "https://risk.bank.example/", "user-17");
  manager->initializeDeviceId();

  switch (riskOf(*manager, Login({.userId = "user-17"}))) {
    case RiskLevel::high:
    case RiskLevel::veryHigh:
      std::cout << "Ask for a second factor.\n";
      break;
    case RiskLevel::undefined:
    case RiskLevel::expire:
      std::cout << "No verdict: let the user in, and count it.\n";
      break;
    case RiskLevel::low:
    case RiskLevel::medium:
      std::cout << "Let the user in.\n";
  }
}
