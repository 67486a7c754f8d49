// consent_child MODE FOLDER URL: a host whose user has not consented ("off"), has ("on"), or takes
// everything back ("erase"). Its data folder is FOLDER; it asks for a verdict and waits for it.

#include <future>
#include <iostream>
#include <string>
#include <utility>

#include "quorvance/quorvance.h"

namespace {

using quorvance::Launch;
using quorvance::QuorvanceManager;
using quorvance::Risk;

std::string askForVerdict(QuorvanceManager& manager) {
  std::promise<std::string> level;
  manager.getRiskForCheckPoint(Launch(), [&](Risk risk, const auto& /*text*/, const auto& /*id*/) {
    level.set_value(risk.stringValue());
  });
  return level.get_future().get();
}

}  // namespace

int main(int /*argc*/, char** argv) {
  const std::string mode = argv[1];
  quorvance::LinuxPlatformOptions options;
  options.hostApplication = {"com.bank.consent", "1"};
  options.dataFolder = argv[2];
  QuorvanceManager::usePlatform(quorvance::makeLinuxPlatform(std::move(options)));
  if (mode == "off") QuorvanceManager::setCollectionEnabled(false);
  const auto manager = QuorvanceManager::shared();
  manager->setupWithServerUrl(argv[3], "u1");
  manager->initializeDeviceId();
  manager->onRequestAccessWithTypeMobilePermission(quorvance::MobilePermission::CAMERA);
  const auto screen =
      manager->startNewScreenListener(quorvance::ScreenListenerType::LOGIN_FORM, 1, nullptr);
  std::cout << askForVerdict(*manager) << std::endl;
  screen->finishScreenListener();
  manager->crashEyeDidCatchCrash(quorvance::CrashModel{});
  manager->logout();
  if (mode != "erase") return 0;
  QuorvanceManager::setCollectionEnabled(false);
  std::promise<bool> isErased;
  manager->eraseStoredData([&](bool isAllGone) { isErased.set_value(isAllGone); });
  std::cout << (isErased.get_future().get() ? "erased" : "something is left") << std::endl;
  return 0;
}
