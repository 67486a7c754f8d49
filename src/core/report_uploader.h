#pragma once

#include <memory>

#include "diagnostics/report_keeper.h"
#include "network/quorvance_network_manager.h"

namespace quorvance {

/// Sends the stored reports of a category and removes what was sent.
class ReportUploader {
 public:
  virtual ~ReportUploader() = default;
  /// Returns at once. `identity` is a call as it stood when the upload was asked for: the reports
  /// go out under its user, device and session, each with a request identifier of its own.
  virtual void uploadStoredReports(ReportCategory category,
                                   std::shared_ptr<QuorvanceNetworkManager> client,
                                   PreparedCall identity) = 0;
};

}  // namespace quorvance
