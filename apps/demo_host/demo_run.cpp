#include "apps/demo_host/demo_run.h"

#include <chrono>
#include <exception>
#include <optional>
#include <thread>
#include <utility>

#include "apps/demo_host/demo_arguments.h"
#include "apps/demo_host/demo_errors.h"
#include "apps/demo_host/demo_report.h"
#include "apps/demo_host/demo_stay.h"
#include "apps/demo_host/inspection_printer.h"
#include "apps/demo_host/journey.h"
#include "apps/demo_host/journey_player.h"
#include "apps/demo_host/screen_player.h"
#include "apps/demo_host/server_process.h"
#include "apps/demo_host/server_tally.h"
#include "apps/demo_host/server_url.h"
#include "apps/demo_host/state_folder.h"
#include "quorvance/platform/linux_platform.h"

namespace demo_host {
namespace {

// Reports, outcomes and a last session are still under way when the last step was played.
constexpr std::chrono::seconds kLastCallsTime{10};
constexpr std::chrono::seconds kLastCallsTimeWithoutTally{1};

std::vector<std::string> serverArguments(const DemoOptions& options, const ServerFiles& files,
                                         const ReportLog& log) {
  std::vector<std::string> arguments = {"--port", "0", "--console-port",
                                        options.stays ? "0" : "off"};
  const auto add = [&](const char* name, const std::optional<std::filesystem::path>& file) {
    if (!file) return;
    arguments.emplace_back(name);
    arguments.push_back(file->string());
  };
  add("--config", files.config);
  add("--rules", files.rules);
  add("--faults", files.faults);
  add("--log", log.file());
  return arguments;
}

void showConsole(const DemoOptions& options, ServerProcess& server, JourneyPrinter& printer) {
  const std::string url = server.readConsoleUrl();
  printer.print("console            " + url);
  if (options.opensConsole && !openInBrowser(url)) {
    printer.print("                   no browser could be opened; open that address yourself");
  }
}

void printEnd(const Journey& journey, const JourneyResult& result, JourneyPrinter& printer,
              std::ostream& error) {
  for (const std::string& fault : result.faults) error << "demo_host: " + fault + "\n";
  error.flush();
  if (!result.faults.empty()) return;
  printer.print("\nplayed " + std::to_string(journey.steps.size()) + " steps, " +
                std::to_string(result.verdicts) + " verdicts, all as expected");
}

// The URL of the server that is to be used, which is started if it is the demo's own.
std::string serverUrlFor(const DemoOptions& options, const ServerFiles& files, const ReportLog& log,
                         std::optional<ServerProcess>& server, JourneyPrinter& printer) {
  if (!options.serverUrl) {
    server.emplace(options.riskServer, serverArguments(options, files, log));
    printer.print("risk server        " + server->url() + ", started for this run");
    if (options.stays) showConsole(options, *server, printer);
    return server->url();
  }
  std::string url = withLastSlash(*options.serverUrl);
  const bool isCompleted = url != *options.serverUrl;
  printer.print("risk server        " + url + (isCompleted ? " (last slash added)" : ""));
  if (files.config || files.rules || files.faults) {
    printer.print(
        "                   its own configuration, rules and faults, not those of the journey");
  }
  return url;
}

// A toolkit, sensors and a clock that a recording drives stand in the platform's place of them.
ReplayPlatform putReplayInto(quorvance::Platform& platform, bool fast) {
  ReplayPlatform replay{std::make_shared<ReplayMotion>(platform.mainQueue),
                        std::make_shared<ReplayClock>(),
                        fast ? ReplayPace::fast : ReplayPace::real};
  platform.motion = replay.motion;
  platform.clock = replay.clock;
  return replay;
}

quorvance::Platform makePlatform(const Journey& journey, StateFolder& state) {
  quorvance::LinuxPlatformOptions options;
  options.hostApplication = journey.setup.application;
  options.dataFolder = state.path().string();
  quorvance::Platform platform = quorvance::makeLinuxPlatform(std::move(options));
  state.isWrittenBy(platform.backgroundQueue);
  return platform;
}

std::shared_ptr<quorvance::QuorvanceManager> makeManager(quorvance::Platform platform, bool debug) {
  if (!quorvance::QuorvanceManager::usePlatform(std::move(platform))) {
    throw RunError("the library is in use already");
  }
  quorvance::QuorvanceManager::setIsInDebugMode(debug);
  return quorvance::QuorvanceManager::shared();
}

// Stored reports go out one after the other, each as work of its own: one flush covers one of them.
void waitForReports(quorvance::QuorvanceManager& manager) {
  const auto end = std::chrono::steady_clock::now() + kLastCallsTime;
  bool isFlushed = true;
  while (isFlushed && manager.pending() > 0) {
    const auto left = end - std::chrono::steady_clock::now();
    isFlushed = manager.flush(std::chrono::duration_cast<std::chrono::milliseconds>(left));
  }
}

// Waits for the last calls and adds what became of all to the faults.
void checkTally(const std::string& url, const std::optional<Tally>& before, JourneyResult& result,
                JourneyPrinter& printer) {
  if (!before) {
    std::this_thread::sleep_for(kLastCallsTimeWithoutTally);
    printer.print("\nthe server keeps no tally of its calls");
    return;
  }
  const Tally calls = waitForCalls(url, *before, result.calls, kLastCallsTime);
  printer.printTally(calls);
  if (calls.refused > 0) {
    result.faults.push_back("the server refused " + std::to_string(calls.refused) +
                            " calls; its log says why (--log FILE)");
  }
  if (const auto missing = missingCalls(result.calls, calls); missing > 0) {
    result.faults.push_back(std::to_string(missing) + " calls did not reach the server in time");
  }
}

JourneyResult playJourney(const DemoOptions& options, const Journey& journey, const ReportLog& log,
                          JourneyPrinter& printer, std::ostream& error) {
  printer.print(journey.title);
  printer.print("");
  std::optional<ServerProcess> server;
  const std::string url = serverUrlFor(options, journey.server, log, server, printer);
  const std::optional<Tally> before = fetchTally(url);
  StateFolder state(options.dataFolder);
  quorvance::Platform platform = makePlatform(journey, state);
  const ReplayPlatform replay = putReplayInto(platform, options.fast);
  const auto manager = makeManager(std::move(platform), options.debug || journey.setup.debug);
  JourneyPlayer player(*manager, printer, replay);
  player.setUp(journey.setup, url);
  printer.print("session            " + manager->getSessionId().value_or("none"));
  printer.printHeading();
  JourneyResult result = player.play(journey.steps);
  waitForReports(*manager);
  checkTally(url, before, result, printer);
  printEnd(journey, result, printer, error);
  if (options.stays) {
    printer.print("\nthe risk server stays; any key or Ctrl-C ends it");
    waitForKeyOrSignal();
  }
  return result;
}

int runParsed(const DemoOptions& options, std::ostream& out, std::ostream& error) {
  const Journey journey = loadJourney(options.journey);
  if (options.dataFolder) checkStateFolder(*options.dataFolder);
  JourneyPrinter printer(out);
  const ReportLog log(options);
  const JourneyResult result = playJourney(options, journey, log, printer, error);
  if (options.report) writeReport(options, *log.file());
  return result.faults.empty() ? kPlayedAsExpected : kRunFailed;
}

}  // namespace

int runDemo(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& error) {
  int status = kRunFailed;
  try {
    const auto options = parseDemoArguments(arguments);
    if (options && options->inspect) return printInspection(*options, out);
    if (options) return runParsed(*options, out, error);
    out << demoUsage() << std::flush;
    return kPlayedAsExpected;
  } catch (const InputError& fault) {
    error << "demo_host: " << fault.what() << '\n';
    status = kWrongInput;
  } catch (const std::exception& fault) {
    error << "demo_host: " << fault.what() << '\n';
  }
  error.flush();
  return status;
}

}  // namespace demo_host
