#include <signal.h>

#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "apps/risk_server/risk_server.h"
#include "apps/risk_server/server_arguments.h"

namespace {

constexpr int kWrongInput = 2;

sigset_t stopSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGTERM);
  sigaddset(&signals, SIGINT);
  return signals;
}

int serveUntilStopped(risk_server::RiskServerOptions options) {
  // Before any thread starts, so that all of them inherit it and a signal waits for sigwait.
  const sigset_t signals = stopSignals();
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  const std::string token = options.guard.token;
  risk_server::RiskServer server(std::move(options));
  server.start();
  std::printf("risk server ready at %s\n", server.url().c_str());
  if (!server.consoleUrl().empty()) {
    // The page takes the token from behind the "#", which no browser sends anywhere.
    const std::string rest = token.empty() ? "" : "#token=" + token;
    std::printf("console at %s\n", (server.consoleUrl() + rest).c_str());
  }
  std::fflush(stdout);
  int received = 0;
  sigwait(&signals, &received);
  server.stop();
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    auto options = risk_server::optionsFromArguments({argv + 1, argv + argc});
    if (!options) {
      std::fputs(risk_server::usageText().c_str(), stdout);
      return 0;
    }
    return serveUntilStopped(std::move(*options));
  } catch (const std::exception& error) {
    // Wrong arguments, wrong files, a port that is taken.
    std::fprintf(stderr, "risk_server: %s\n", error.what());
    return kWrongInput;
  }
}
