#include "test/crash/crash_child_world.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <time.h>
#include <unistd.h>

#include <cstdlib>
#include <utility>

#include "test/crash/allocator_count.h"
#include "test/watched_documents_test_support.h"

namespace quorvance {
namespace {

int* volatile nothing = nullptr;

CrashNotes* mapNotes(const std::string& path) {
  const int file = open(path.c_str(), O_RDWR | O_CLOEXEC);
  void* const memory =
      mmap(nullptr, sizeof(CrashNotes), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
  close(file);
  if (memory == MAP_FAILED) std::_Exit(EXIT_FAILURE);
  return static_cast<CrashNotes*>(memory);
}

/// The real trap; says what delegates are told, and lets them be as bad as the test wants.
class OverheardTrap : public CrashTrap {
 public:
  OverheardTrap(std::shared_ptr<CrashTrap> trap, const DelegateManner& manner)
      : trap_(std::move(trap)), manner_(manner) {}

  void install(CrashPlan plan) override {
    plan.tell = [tell = std::move(plan.tell), this](const CaughtCrash& crash) {
      tell(crash);
      sayLine("told " + crash.name + (crash.isStored ? " stored" : " not stored"));
      if (manner_ == DelegateManner::hangs) pause();
      if (manner_ == DelegateManner::crashes) writeToNothing();
    };
    trap_->install(std::move(plan));
  }

 private:
  const std::shared_ptr<CrashTrap> trap_;
  const DelegateManner& manner_;
};

class HostsDocuments : public WatchedDocuments {
 public:
  HostsDocuments(std::shared_ptr<DocumentsFolder> inner, DocumentsManner manner)
      : WatchedDocuments(std::move(inner)), manner_(manner) {}

  std::optional<PlatformError> write(const std::string& name, std::string_view bytes) override {
    if (std::exchange(manner_, DocumentsManner::writes) == DocumentsManner::faultsFirst) {
      writeToNothing();
    }
    return WatchedDocuments::write(name, bytes);
  }

 private:
  DocumentsManner manner_;
};

Platform linuxPlatformIn(const std::string& folder) {
  LinuxPlatformOptions options;
  options.dataFolder = folder;
  return makeLinuxPlatform(std::move(options));
}

}  // namespace

CrashChildWorld::CrashChildWorld(std::string folder, const std::string& notesFile)
    : folder_(std::move(folder)), notes_(mapNotes(notesFile)), platform_(doubles_.platform()) {
  // Reports go where the documents are, wherever the rest of the trap's platform is.
  platform_.documents = linuxPlatformIn(folder_).documents;
  platform_.crashTrap = std::make_shared<OverheardTrap>(
      linuxPlatformIn(folder_ + "/of_the_trap").crashTrap, delegateManner);
  manager_ = std::make_unique<QuorvanceManager>(platform_);
}

CrashChildWorld::~CrashChildWorld() = default;

void CrashChildWorld::receiveConfiguration(bool enableCrashEye) {
  doubles_.http->answer(
      "qrsk-med/3.0/getSdkConfiguration/",
      okReply(enableCrashEye ? R"({"enable_crash_eye": true})" : R"({"enable_crash_eye": false})"));
  manager_->setupWithServerUrl("http://risk.test/", "u1");
  doubles_.time->run();
}

void CrashChildWorld::dropManager() {
  doubles_.http->dropAll();
  doubles_.time->dropAll();
  manager_.reset();
}

void CrashChildWorld::replaceDocuments() {
  platform_.documents = std::make_shared<HostsDocuments>(platform_.documents, documentsManner);
  manager_ = std::make_unique<QuorvanceManager>(platform_);
}

void CrashChildWorld::tellOfCrash(const CrashModel& crash) {
  manager_->crashEyeDidCatchCrash(crash);
}

void CrashChildWorld::noteFault() {
  timespec now = {};
  clock_gettime(CLOCK_MONOTONIC, &now);
  notes_->faultTime = std::int64_t{now.tv_sec} * 1'000'000'000 + now.tv_nsec;
  countAllocatorCalls(*notes_);
}

void sayLine(const std::string& line) {
  const std::string whole = line + "\n";
  // Who cannot be told of a crash learns of it from the file.
  if (write(STDOUT_FILENO, whole.data(), whole.size()) < 0) return;
}

void writeToNothing() { *nothing = 1; }

}  // namespace quorvance
