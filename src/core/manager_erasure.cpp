#include <utility>

#include "base/out_of_memory.h"
#include "core/manager_core.h"

namespace quorvance {

// Memory forgets in this call, so that what the host does next begins anew. The disk follows on the
// file lane, behind the reports that still wait for it.
void ManagerCore::eraseStoredData(ErasureCompletion completion) {
  const Platform& platform = context_->platform;
  context_->deviceData->forget();
  context_->tracing->clear();
  if (const auto& face = platform.faceDetection) face->reset();
  platform.backgroundQueue->post(
      WorkLane::files,
      withinMemory([store = context_->reportStore, defaults = platform.defaults,
                    queue = platform.backgroundQueue, completion = std::move(completion),
                    pending = context_->ledger->pending()->begin()] {
        const bool isStateGone = defaults->isForgotten();
        const bool isAllGone = store->eraseAll() && isStateGone;
        if (!completion) return;
        queue->post(WorkLane::completions,
                    [completion, isAllGone, pending] { callHost([&] { completion(isAllGone); }); });
      }));
}

}  // namespace quorvance
