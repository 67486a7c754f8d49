// The smallest host: it asks for one verdict and says what to do about it.

#include <quorvance/quorvance.h>

#include <future>
#include <iostream>
#include <memory>

using namespace quorvance;

int main(int argc, char** argv) {
  auto manager = QuorvanceManager::shared();
  // The last slash matters: paths are glued to the URL.
  manager->setupWithServerUrl(argc > 1 ? argv[1] : "https://risk.bank.example/", "user-17");
  manager->initializeDeviceId();

  auto answer = std::make_shared<std::promise<RiskLevel>>();
  const auto onVerdict = [answer](Risk risk, std::string signedRisk, std::string requestID) {
    // On a background thread of the library, exactly once: hop to your own if you need it.
    std::cout << requestID << " is " << risk.stringValue() << ", signed " << signedRisk << '\n';
    answer->set_value(risk.riskLevel);
  };
  manager->getRiskForCheckPoint(Login({.userId = "user-17"}), onVerdict);

  const bool isRisky = answer->get_future().get() == RiskLevel::veryHigh;
  std::cout << (isRisky ? "Ask for a second factor.\n" : "Let the user in.\n");
}
