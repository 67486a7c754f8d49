// The Linux side of the seam; start reading here. Each class beside this file stands for one
// interface; what they share:
//   library_thread    how every thread of the library is started
//   timed_tasks       the order of waiting tasks, for both main queues
//   private_files     files and folders of the application's own data
//   crash_*           what the handlers of linux_crash_trap are made of
//   root_files        the files in which a system describes itself, under any root folder
//   assignments, locale_names, time_zone_name, chassis_kind, url_check, data_folder
//                     rules without a system call
#include "quorvance/platform/linux_platform.h"

#include <errno.h>

#include <utility>

#include "platform/linux/curl_http_session.h"
#include "platform/linux/data_folder.h"
#include "platform/linux/json_file_store.h"
#include "platform/linux/linux_crash_trap.h"
#include "platform/linux/linux_documents_folder.h"
#include "platform/linux/linux_environment.h"
#include "platform/linux/linux_identity.h"
#include "platform/linux/linux_system_facts.h"
#include "platform/linux/root_files.h"
#include "platform/linux/system_wall_clock.h"
#include "platform/linux/thread_main_queue.h"
#include "platform/linux/work_queue.h"

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

LinuxEnvironment::Variables variablesOf(const LinuxPlatformOptions& options) {
  if (!options.environment) return LinuxEnvironment::processVariables();
  return {options.environment->begin(), options.environment->end()};
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
  platform.mainQueue = std::move(options.mainQueue);
  if (!platform.mainQueue) platform.mainQueue = std::make_shared<ThreadMainQueue>();
  platform.backgroundQueue = std::make_shared<WorkQueue>();
  platform.http = std::make_shared<CurlHttpSession>();
  platform.documents = std::make_shared<LinuxDocumentsFolder>(options.dataFolder);
  platform.crashTrap = std::make_shared<LinuxCrashTrap>(options.dataFolder);
  platform.defaults =
      std::make_shared<JsonFileStore>(std::move(options.dataFolder), platform.backgroundQueue);

  const RootFiles files(std::move(options.root));
  platform.identity = std::make_shared<LinuxIdentity>(files, identifier, platform.defaults);
  platform.facts.system = std::make_shared<LinuxSystemFacts>(files, platform.environment);
  return platform;
}

}  // namespace quorvance
