#pragma once

#include <memory>

#include "core/context.h"
#include "network/quorvance_network_manager.h"

namespace quorvance {

/// Sends the trace buffer in a loop that never stops: 30 s after its start, then 30 s after each
/// round, be the buffer empty, sent or refused. Any thread.
///
/// A buffer that was sent is cleared; what is added between the copy and the clear is lost with it,
/// and that is accepted. Loops are not merged: each start begins one more.
class TraceUploader {
 public:
  TraceUploader(std::shared_ptr<Context> context, std::shared_ptr<QuorvanceNetworkManager> client);

  /// `owner` holds this uploader; the loop holds the owner.
  void start(std::shared_ptr<const void> owner) const;

 private:
  void upload(const std::shared_ptr<const void>& owner) const;
  void send(const PreparedCall& call, const std::shared_ptr<const void>& owner) const;

  const std::shared_ptr<Context> context_;
  const std::shared_ptr<QuorvanceNetworkManager> client_;
};

}  // namespace quorvance
