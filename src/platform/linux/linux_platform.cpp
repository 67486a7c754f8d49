// The Linux side of the seam; start reading here. Each room holds what stands behind some of the
// interfaces:
//   threads/   both main queues, the background queue, and how every thread of the library starts
//   storage/   files and folders of the application's own data: the state, the documents
//   http/      the HTTP session over libcurl
//   motion/    accelerometer, gyroscope, gravity and magnetometer
//   facts/     what the system tells of itself
//   routes/    which network the device is on
//   bus/       what services on the D-Bus tell
//   permissions/  what the user allows, and the place where that is allowed
//   desktop/   fonts and the user's settings
//   hardware/  what the kernel tells of screen, battery and posture
//   crash/     the crash trap: what a dying process may still do
#include "quorvance/platform/linux_platform.h"

#include <errno.h>

#include <chrono>
#include <utility>

#include "platform/linux/bus/bus_place.h"
#include "platform/linux/crash/linux_crash_trap.h"
#include "platform/linux/desktop/linux_accessibility_facts.h"
#include "platform/linux/desktop/linux_font_facts.h"
#include "platform/linux/facts/linux_environment.h"
#include "platform/linux/facts/linux_identity.h"
#include "platform/linux/facts/linux_system_facts.h"
#include "platform/linux/facts/root_files.h"
#include "platform/linux/facts/sandbox.h"
#include "platform/linux/hardware/linux_posture_facts.h"
#include "platform/linux/hardware/linux_power_source.h"
#include "platform/linux/hardware/linux_screen_facts.h"
#include "platform/linux/http/curl_http_session.h"
#include "platform/linux/motion/iio_sensor_finder.h"
#include "platform/linux/motion/linux_motion_source.h"
#include "platform/linux/permissions/linux_authorization.h"
#include "platform/linux/routes/linux_network_facts.h"
#include "platform/linux/routes/linux_reachability_monitor.h"
#include "platform/linux/storage/data_folder.h"
#include "platform/linux/storage/json_file_store.h"
#include "platform/linux/storage/linux_documents_folder.h"
#include "platform/linux/threads/thread_main_queue.h"
#include "platform/linux/threads/watch_thread.h"
#include "platform/linux/threads/work_queue.h"

namespace quorvance {
namespace {

/// Of the running file, whatever name it was called by.
std::string executableName() {
  const std::string path = RootFiles("/").linkTarget("/proc/self/exe").value_or("");
  std::string name = path.substr(path.rfind('/') + 1);
  constexpr std::string_view kDeleted = " (deleted)";  // the kernel's mark, not part of the name
  if (name.ends_with(kDeleted)) name.resize(name.size() - kDeleted.size());
  return name.empty() ? std::string(program_invocation_short_name) : name;
}

/// The system's real-time clock. Any thread.
class SystemWallClock : public WallClock {
 public:
  double secondsSince1970() override {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration<double>(now).count();
  }
};

LinuxEnvironment::Variables variablesOf(const LinuxPlatformOptions& options) {
  if (!options.environment) return LinuxEnvironment::processVariables();
  return {options.environment->begin(), options.environment->end()};
}

BusPlace placeOf(std::optional<std::string>& address, BusPlace usual) {
  return address ? BusPlace{unixAddressesIn(*address)} : std::move(usual);
}

/// What the kernel's and the system's files tell.
void addMachineFacts(Platform& platform, const RootFiles& files) {
  const auto sensors = std::make_shared<IioSensorFinder>(files);
  platform.motion = std::make_shared<LinuxMotionSource>(sensors, platform.mainQueue);
  platform.facts.system = std::make_shared<LinuxSystemFacts>(files, platform.environment);
  platform.facts.storage = std::make_shared<LinuxStorageFacts>(platform.environment);
  platform.facts.screen = std::make_shared<LinuxScreenFacts>(files);
  platform.facts.fonts = std::make_shared<LinuxFontFacts>();
  platform.facts.posture = std::make_shared<LinuxPostureFacts>(sensors);
  platform.facts.power = std::make_shared<LinuxPowerSource>(files);
}

/// What is read from buses, or followed by the watch thread.
void addBusFacts(Platform& platform, LinuxPlatformOptions& options, const RootFiles& files,
                 std::shared_ptr<ThreadRetries> retries) {
  EnvironmentSource& environment = *platform.environment;
  const BusPlace systemBus = placeOf(options.systemBusAddress, systemBusOf(environment, files));
  const BusPlace sessionBus = placeOf(options.sessionBusAddress, sessionBusOf(environment));
  const FindSandbox findSandbox = [variables = platform.environment, files,
                                   host = platform.hostApplication.identifier] {
    return sandboxOf(*variables, files, host);
  };
  const auto watchThread = std::make_shared<WatchThread>(std::move(retries));
  const bool mayStart = options.mayStartServices;
  const PermissionSources permissions = {
      .host = std::move(options.authorization),
      .hostLocation = std::move(options.location),
      .store = std::make_shared<PermissionStore>(sessionBus, findSandbox, mayStart, watchThread),
      .geoClue = std::make_shared<GeoClue>(systemBus, findSandbox, mayStart, watchThread),
      .cameras = std::make_shared<CameraDevices>(files, watchThread)};
  platform.authorization = std::make_shared<LinuxAuthorization>(permissions);
  platform.location = std::make_shared<LinuxLocation>(permissions);
  platform.reachability = std::make_shared<LinuxReachabilityMonitor>(files, watchThread);
  platform.facts.network = std::make_shared<LinuxNetworkFacts>(files, systemBus);
  platform.facts.accessibility = std::make_shared<LinuxAccessibilityFacts>(
      std::move(options.accessibility), sessionBus, files);
}

}  // namespace

Platform makeLinuxPlatform(LinuxPlatformOptions options) {
  Platform platform;
  platform.hostApplication = std::move(options.hostApplication);
  std::string& identifier = platform.hostApplication.identifier;
  if (identifier.empty()) identifier = executableName();

  platform.environment = std::make_shared<LinuxEnvironment>(variablesOf(options));
  if (!options.dataFolder) options.dataFolder = dataFolderFor(*platform.environment, identifier);

  platform.clock = std::make_shared<SystemWallClock>();
  const auto retries = std::make_shared<ThreadRetries>();
  platform.mainQueue = std::move(options.mainQueue);
  if (!platform.mainQueue) platform.mainQueue = std::make_shared<ThreadMainQueue>(retries);
  retries->useTimersOf(platform.mainQueue);
  const auto workQueue = std::make_shared<WorkQueue>(WorkQueue::kIdleTime, retries);
  platform.backgroundQueue = workQueue;
  platform.http =
      std::make_shared<CurlHttpSession>(std::move(options.http), retries, workQueue->wakeUps());
  platform.documents = std::make_shared<LinuxDocumentsFolder>(options.dataFolder);
  if (options.mayCatchCrashes) platform.crashTrap = std::make_shared<LinuxCrashTrap>();
  platform.defaults =
      std::make_shared<JsonFileStore>(std::move(options.dataFolder), platform.backgroundQueue);

  const RootFiles files(options.root);
  platform.identity = std::make_shared<LinuxIdentity>(files, identifier, platform.defaults);
  addMachineFacts(platform, files);
  platform.userData = std::move(options.userData);
  platform.beforeSend = std::move(options.beforeSend);
  addBusFacts(platform, options, files, retries);
  return platform;
}

Platform makeDefaultPlatform() { return makeLinuxPlatform(); }

}  // namespace quorvance
