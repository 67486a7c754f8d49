#include <algorithm>
#include <future>
#include <utility>

#include "base/library_code.h"
#include "base/out_of_memory.h"
#include "base/process_end.h"
#include "core/manager_core.h"
#include "network/url_text.h"

namespace quorvance {
namespace {

using Clock = std::chrono::steady_clock;

// Longer than anybody waits; the time of now may be added to it.
constexpr std::chrono::hours kLongestFlush{24 * 365};
// So often is the state asked to be written.
constexpr int kMaxStateWrites = 5;

}  // namespace

// The state last: what was pending may have changed it.
bool ManagerCore::flush(std::chrono::milliseconds timeout) {
  if (isInLibraryCode() || hasProcessExitBegun()) return false;
  const auto wait = std::clamp<std::chrono::milliseconds>(timeout, {}, kLongestFlush);
  const Clock::time_point deadline = Clock::now() + wait;
  return context_->ledger->pending()->waitForPresent(deadline) && flushState(deadline);
}

// A task behind the others of the file lane tells that the disk has been asked. What is still not
// written then may be newer, or cannot be written.
bool ManagerCore::flushState(Clock::time_point deadline) {
  const Platform& platform = context_->platform;
  for (int round = 0; round < kMaxStateWrites; ++round) {
    if (platform.defaults->isSynchronized()) return true;
    platform.defaults->synchronize();
    const auto ended = std::make_shared<std::promise<void>>();
    platform.backgroundQueue->post(WorkLane::files, [ended] { ended->set_value(); });
    if (ended->get_future().wait_until(deadline) != std::future_status::ready) return false;
  }
  return platform.defaults->isSynchronized();
}

// What comes between the two is refused, so that nothing is accepted that nobody waits for.
bool ManagerCore::shutDown(std::chrono::milliseconds timeout) {
  flags_.isShutDown = true;
  traceUploader_.stop();
  return flush(timeout);
}

std::size_t ManagerCore::pending() {
  const std::size_t writes = context_->platform.defaults->isSynchronized() ? 0 : 1;
  return context_->ledger->pending()->count() + writes;
}

DeliveryStatus ManagerCore::status() {
  DeliveryStatus status;
  status.isConfigured = !flags_.repeatSdkConfig;
  status.hasDeviceIdentifier = getDeviceId().value_or(std::string(kNoDeviceId)) != kNoDeviceId;
  status.isSessionAccepted = isDataSendAfterSession();
  status.isShutDown = isShutDown();
  if (const auto url = identity().serverUrl()) {
    if (const auto fault = faultOfServerUrl(*url); !fault.empty()) status.urlFault = fault;
  }
  status.pending = pending();
  if (context_->redaction) status.keptBack = context_->redaction->dropped();
  context_->ledger->describe(status);
  return status;
}

void ManagerCore::onDeviceIdentifier(DeviceIdentifierCallback callback) {
  if (!callback) return;
  {
    const std::lock_guard lock(mutex_);
    identifierCallbacks_.push_back(std::move(callback));
  }
  const std::string deviceId = getDeviceId().value_or(std::string(kNoDeviceId));
  if (deviceId != kNoDeviceId) tellDeviceIdentifier(deviceId, {});
}

// Whoever takes the callbacks calls them: one that comes meanwhile finds the identifier stored.
void ManagerCore::tellDeviceIdentifier(const std::string& deviceId,
                                       const PendingWork::Mark& cause) {
  // What each is given is made beforehand: a want of memory is ours, not the host's.
  struct Told {
    std::vector<DeviceIdentifierCallback> callbacks;
    std::vector<std::string> identifiers;
  };
  auto told = std::make_shared<Told>();
  {
    const std::lock_guard lock(mutex_);
    told->identifiers.assign(identifierCallbacks_.size(), deviceId);
    told->callbacks.swap(identifierCallbacks_);
  }
  if (told->callbacks.empty()) return;
  context_->platform.backgroundQueue->post(
      WorkLane::completions,
      [told, pending = cause ? cause : context_->ledger->pending()->begin()] {
        for (std::size_t i = 0; i < told->callbacks.size(); ++i) {
          callHost([&] { told->callbacks[i](std::move(told->identifiers[i])); });
        }
      });
}

}  // namespace quorvance
