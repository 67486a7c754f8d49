#include <signal.h>

#include <cstdio>
#include <exception>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "apps/risk_server/captures/capture_check.h"
#include "apps/risk_server/captures/capture_file.h"
#include "apps/risk_server/report/report_writer.h"
#include "apps/risk_server/risk_server.h"
#include "apps/risk_server/server_arguments.h"
#include "apps/risk_server/verdicts/signed_verdict.h"

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

int writeReport(const risk_server::ReportOrder& order, const risk_server::Contract& contract) {
  const risk_server::Capture capture = risk_server::loadCapture(order.capture, contract);
  const risk_server::Masker masker(contract, risk_server::randomSigningKey());
  const std::string report = risk_server::reportOf(capture, order.capture.filename().string(),
                                                   order.isPlain ? nullptr : &masker);
  std::ofstream stream(order.file, std::ios::binary | std::ios::trunc);
  stream << report;
  stream.close();
  if (!stream) throw risk_server::InputError(order.file.string() + ": cannot be written");
  std::printf("%s: %zu exchanges\n", order.file.c_str(), capture.exchanges.size());
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 2 && std::string(argv[1]) == "--version") {
    std::puts("risk_server " QUORVANCE_VERSION);
    return 0;
  }
  try {
    auto line = risk_server::commandLineFrom({argv + 1, argv + argc});
    if (!line) {
      std::fputs(risk_server::usageText().c_str(), stdout);
      return 0;
    }
    if (line->check)
      return risk_server::checkCapture(*line->check, line->options.contract, std::cout);
    if (line->report) return writeReport(*line->report, line->options.contract);
    return serveUntilStopped(std::move(line->options));
  } catch (const std::exception& error) {
    // Wrong arguments, wrong files, a port that is taken.
    std::fprintf(stderr, "risk_server: %s\n", error.what());
    return kWrongInput;
  }
}
