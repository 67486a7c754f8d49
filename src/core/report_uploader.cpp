#include "core/report_uploader.h"

#include <string>
#include <utility>
#include <vector>

#include "base/collection.h"
#include "base/out_of_memory.h"

namespace quorvance {

/// One pass through the files of a category, held by the step that is under way.
struct ReportUploader::Run : std::enable_shared_from_this<Run> {
  Run(std::shared_ptr<ReportUploader> owner, Ask what)
      : uploader(std::move(owner)), ask(std::move(what)) {}
  ~Run() {
    lock.reset();  // before a further run wants it
    uploader->end(ask.category);
  }
  Run(const Run&) = delete;
  Run& operator=(const Run&) = delete;

  const std::shared_ptr<ReportUploader> uploader;
  const Ask ask;
  std::unique_ptr<DocumentsLock> lock;
  std::vector<std::string> names;
  /// The file that is tried next; the one before it was tried last.
  std::size_t next = 0;
  bool wasLastTaken = false;
  PendingWork::Mark pending;
  /// Goes on with the next file.
  std::shared_ptr<PreparedTask> step;
};

ReportUploader::ReportUploader(std::shared_ptr<ReportStore> store,
                               std::shared_ptr<BackgroundQueue> backgroundQueue,
                               std::shared_ptr<DeliveryLedger> ledger)
    : store_(std::move(store)),
      backgroundQueue_(std::move(backgroundQueue)),
      ledger_(std::move(ledger)) {}

ReportUploader::Category& ReportUploader::categoryOf(ReportCategory category) {
  return categories_[static_cast<std::size_t>(category)];
}

ReportUploader::SharedRun ReportUploader::ask(ReportCategory category,
                                              std::shared_ptr<QuorvanceNetworkManager> client,
                                              Caller caller) {
  Ask ask{category, std::move(client), std::move(caller)};
  {
    const std::lock_guard lock(mutex_);
    Category& state = categoryOf(category);
    if (state.isRunning) {
      if (!state.waiting) state.waiting = std::move(ask);
      return nullptr;
    }
    state.isRunning = true;
  }
  return makeRun(std::move(ask));
}

// Without memory the reports wait for the next ask.
ReportUploader::SharedRun ReportUploader::makeRun(Ask ask) noexcept {
  const ReportCategory category = ask.category;
  SharedRun run;
  if (!hasMemoryFor([&] { run = std::make_shared<Run>(shared_from_this(), std::move(ask)); })) {
    end(category);
  }
  if (run) run->pending = ledger_->pending()->begin();
  return run;
}

void ReportUploader::start(const SharedRun& run) noexcept {
  if (!run) return;
  run->step = backgroundQueue_->prepare(WorkLane::files, [run = run.get()](const auto& /*owner*/) {
    run->uploader->goOn(run->shared_from_this());
  });
  if (run->step) run->step->start(run);
}

// On the file lane, as what follows. Where there is nothing to send nobody is kept from it.
void ReportUploader::goOn(const SharedRun& run) {
  if (!run->lock) {
    if (store_->reportsOf(run->ask.category).empty()) return;
    run->lock = store_->lockUpload(run->ask.category);
    if (run->lock) run->names = store_->reportsOf(run->ask.category);
  } else if (std::exchange(run->wasLastTaken, false)) {
    ledger_->note(ReportFate::sent);
    hasMemoryFor([&] { store_->removeReport(run->names[run->next - 1]); });
  }
  tryNext(run);
}

// A run ends where collection is switched off; what was taken until then has been removed.
void ReportUploader::tryNext(const SharedRun& run) {
  while (isCollectionEnabled() && run->next < run->names.size()) {
    const std::string& name = run->names[run->next++];
    run->pending = ledger_->pending()->begin();
    const bool isHandedOver = hasMemoryFor([&] {
      // With an answer or without one: the run goes on when the handler ends.
      const ReplyHandler handler = {[run](const ResponceObject& response) {
                                      run->wasLastTaken = response.succeeded();
                                      run->step->start(run);
                                    },
                                    [run] { run->step->start(run); }};
      hasMemoryFor([&] { send(run, name, handler); });
    });
    if (isHandedOver) return;
  }
}

void ReportUploader::send(const SharedRun& run, const std::string& name,
                          const ReplyHandler& handler) {
  std::optional<Json> report = store_->readReport(name);
  if (!report) return;
  const JsonDiscarder discarder(report);
  const Ask& ask = run->ask;
  PreparedCall call = ask.client->prepareFor(ask.caller, serviceOf(ask.category));
  call.pending = run->pending;
  ask.client->send(call, std::move(*report), handler);
}

void ReportUploader::end(ReportCategory category) noexcept {
  std::optional<Ask> further;
  {
    const std::lock_guard lock(mutex_);
    Category& state = categoryOf(category);
    further = std::exchange(state.waiting, std::nullopt);
    state.isRunning = further.has_value();
  }
  if (further) start(makeRun(std::move(*further)));
}

}  // namespace quorvance
