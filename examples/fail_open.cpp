// Fail open: without a verdict the user gets in. Right where being locked out costs more than the
// risk, for example at a login that is followed by stronger checks.

#include <quorvance/quorvance.h>

#include <chrono>
#include <iostream>

using namespace quorvance;
using namespace std::chrono_literals;

int main(int argc, char** argv) {
  auto manager = QuorvanceManager::shared();
  manager->setupWithServerUrl(argc > 1 ? argv[1] : "https://risk.bank.example/", "user-17");
  manager->initializeDeviceId();

  // For as long as the user would wait, not longer. Why there is none stands in its reason.
  const Verdict verdict =
      manager->riskForCheckPoint(Login({.userId = "user-17"}), {.deadline = 2s}).get();
  switch (verdict.risk.riskLevel) {
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
