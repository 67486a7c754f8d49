#pragma once

#include <atomic>
#include <cstddef>
#include <memory>

#include "core/context.h"
#include "network/quorvance_network_manager.h"

namespace quorvance {

/// Sends the trace buffer in a loop that never stops: 30 s after its start, then 30 s after each
/// round, be the buffer empty, sent or refused. Any thread.
///
/// A buffer that was sent is cleared; what is added between the copy and the clear is lost with it,
/// and that is accepted. Loops are not merged: each start begins one more. A round that is lost,
/// for want of memory above all, counts as a refused one. Nobody has to wait for a round: traces
/// are not pending.
class TraceUploader {
 public:
  TraceUploader(std::shared_ptr<Context> context, std::shared_ptr<QuorvanceNetworkManager> client);

  /// `owner` holds this uploader; the loop holds the owner. Nothing is thrown.
  void start(const std::shared_ptr<const void>& owner) noexcept;
  /// All loops end with their next turn. Any thread.
  void stop() noexcept { isStopped_ = true; }

 private:
  class Loop;
  using SharedLoop = std::shared_ptr<Loop>;

  void begin(const std::shared_ptr<const void>& owner,
             void (TraceUploader::*step)(const SharedLoop&)) noexcept;
  void scheduleRound(const SharedLoop& loop);
  PreparedCall prepareRound();
  void upload(const SharedLoop& loop);
  void send(const PreparedCall& call, const SharedLoop& loop);
  void resume(const std::shared_ptr<const void>& owner) noexcept;
  void resumeLost(const std::shared_ptr<const void>& owner) noexcept;

  const std::shared_ptr<Context> context_;
  const std::shared_ptr<QuorvanceNetworkManager> client_;
  // For what is lost: needs no memory.
  std::atomic<std::size_t> lostLoops_{0};
  std::atomic<bool> isStopped_{false};
  const std::shared_ptr<PreparedTask> resumption_;
};

}  // namespace quorvance
