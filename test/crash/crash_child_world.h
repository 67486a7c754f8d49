#pragma once

#include <memory>
#include <string>

#include "platform/testing/test_world.h"
#include "quorvance/quorvance.h"
#include "test/crash/crash_notes.h"

namespace quorvance {

/// What a delegate does once it was told of a crash.
enum class DelegateManner { returns, hangs, crashes };

/// What the host's own documents do when a report is written.
enum class DocumentsManner { writes, faultsFirst };

/// A host in miniature: a real crash trap and a real folder, everything else in virtual time on one
/// thread.
class CrashChildWorld {
 public:
  /// The notes' file must be there.
  CrashChildWorld(std::string folder, const std::string& notesFile);
  ~CrashChildWorld();
  CrashChildWorld(const CrashChildWorld&) = delete;
  CrashChildWorld& operator=(const CrashChildWorld&) = delete;

  /// The library takes a configuration of the server's; again: a further one.
  void receiveConfiguration(bool enableCrashEye);
  /// The library's side ends, as with a host that has let its manager go.
  void dropManager();
  /// The host keeps the reports itself from now on, in this folder, but as no folder of a file
  /// system.
  void replaceDocuments();
  void tellOfCrash(const CrashModel& crash);
  /// The next thing that the calling thread does is its fault.
  void noteFault();

  const std::string& folder() const { return folder_; }

  DelegateManner delegateManner = DelegateManner::returns;
  DocumentsManner documentsManner = DocumentsManner::writes;

 private:
  const std::string folder_;
  TestWorld doubles_;
  CrashNotes* notes_ = nullptr;
  Platform platform_;
  std::unique_ptr<QuorvanceManager> manager_;
};

/// Writes a line to the standard output at once.
void sayLine(const std::string& line);
/// Writes to where nothing can be written. From here on the process is dead.
void writeToNothing();

}  // namespace quorvance
