#include "core/report_uploader.h"

#include <utility>

#include "base/uuid.h"

namespace quorvance {

ReportUploader::ReportUploader(std::shared_ptr<ReportStore> store,
                               std::shared_ptr<BackgroundQueue> backgroundQueue)
    : store_(std::move(store)), backgroundQueue_(std::move(backgroundQueue)) {}

ReportUploader::Category& ReportUploader::categoryOf(const Ask& ask) {
  return categories_[static_cast<std::size_t>(ask.category)];
}

void ReportUploader::uploadStoredReports(ReportCategory category,
                                         std::shared_ptr<QuorvanceNetworkManager> client,
                                         PreparedCall identity) {
  Ask ask{category, std::move(client), std::move(identity)};
  {
    const std::lock_guard lock(mutex_);
    Category& state = categoryOf(ask);
    if (state.isRunning) {
      if (!state.waiting) state.waiting = std::move(ask);
      return;
    }
    state.isRunning = true;
  }
  begin(std::move(ask));
}

void ReportUploader::begin(Ask ask) {
  auto run = std::make_shared<Run>(Run{std::move(ask), {}, 0, nullptr});
  backgroundQueue_->post(WorkLane::files, [self = shared_from_this(), run] {
    run->lock = self->store_->lockUpload(run->ask.category);
    if (run->lock) run->names = self->store_->reportsOf(run->ask.category);
    self->tryNext(run);
  });
}

// On the file lane.
void ReportUploader::tryNext(const std::shared_ptr<Run>& run) {
  while (run->next < run->names.size()) {
    const std::string& name = run->names[run->next++];
    if (auto report = store_->readReport(name)) {
      send(run, name, std::move(*report));
      return;
    }
  }
  end(*run);
}

void ReportUploader::send(const std::shared_ptr<Run>& run, const std::string& name, Json report) {
  PreparedCall call = run->ask.identity;
  call.requestId = randomUuid();
  call.keys.requestId = call.requestId;
  run->ask.client->send(
      call, std::move(report),
      {[self = shared_from_this(), run, name](const ResponceObject& response) {
         self->finish(run, name, response.succeeded());
       },
       [self = shared_from_this(), run, name] { self->finish(run, name, false); }});
}

void ReportUploader::finish(const std::shared_ptr<Run>& run, const std::string& name,
                            bool wasTaken) {
  backgroundQueue_->post(WorkLane::files, [self = shared_from_this(), run, name, wasTaken] {
    if (wasTaken) self->store_->removeReport(name);
    self->tryNext(run);
  });
}

void ReportUploader::end(Run& run) {
  run.lock.reset();
  std::optional<Ask> further;
  {
    const std::lock_guard lock(mutex_);
    Category& state = categoryOf(run.ask);
    further = std::exchange(state.waiting, std::nullopt);
    state.isRunning = further.has_value();
  }
  if (further) begin(std::move(*further));
}

}  // namespace quorvance
