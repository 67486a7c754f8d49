#pragma once

#include <memory>

#include "diagnostics/crash_eye_delegate.h"
#include "quorvance/platform/crash_trap.h"
#include "quorvance/platform/documents.h"
#include "state/system_texts.h"

namespace quorvance {

/// Catches the crashes of this process with the platform's trap, which writes the report, and hands
/// each to every delegate that is still alive, held weakly: it keeps nobody alive. The list of
/// delegates is the process's own. Any thread that may wait for the disk.
class CrashEye {
 public:
  /// Without a trap nothing is ever caught. The trap writes into the folder of the documents, which
  /// may be null; where it cannot, the delegates store what they are told.
  CrashEye(std::shared_ptr<CrashTrap> trap, std::shared_ptr<SystemTexts> texts,
           std::shared_ptr<DocumentsFolder> documents);

  /// With the texts of now, and anew once the system's version is known if it is not now; a
  /// delegate that is there already is not added again.
  void install(std::weak_ptr<CrashEyeDelegate> delegate);

 private:
  const std::shared_ptr<CrashTrap> trap_;
  const std::shared_ptr<SystemTexts> texts_;
  const std::shared_ptr<DocumentsFolder> documents_;
};

}  // namespace quorvance
