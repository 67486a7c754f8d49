// The smallest host: it asks for one verdict and says what to do about it.

#include <quorvance/quorvance.h>

#include <chrono>
#include <future>
#include <iostream>
#include <memory>

using namespace quorvance;
using namespace std::chrono_literals;

int main(int argc, char** argv) {
  auto manager = QuorvanceManager::shared();
  // The last slash matters: paths are glued to the URL.
  manager->setupWithServerUrl(argc > 1 ? argv[1] : "https://risk.bank.example/", "user-17");
  // The server knows a device by its identifier: a new one is worth a moment.
  auto known = std::make_shared<std::promise<void>>();
  manager->onDeviceIdentifier([known](std::string) { known->set_value(); });
  manager->initializeDeviceId();
  known->get_future().wait_for(2s);

  // An application gives a completion in place of the future: it comes once, on a thread of
  // the library, at the deadline at the latest.
  const Verdict verdict =
      manager->riskForCheckPoint(Login({.userId = "user-17"}), {.deadline = 3s}).get();
  std::cout << verdict.requestID << " is " << verdict.risk.stringValue() << ", signed "
            << verdict.signedRisk << ", " << toString(verdict.reason) << '\n';

  const bool isRisky = verdict.risk.riskLevel == RiskLevel::veryHigh;
  std::cout << (isRisky ? "Ask for a second factor.\n" : "Let the user in.\n");
  manager->flush(2s);  // nothing is lost at the end
}
