#include "diagnostics/report_store.h"

#include <algorithm>
#include <chrono>
#include <mutex>
#include <system_error>
#include <utility>

#include "base/collection.h"
#include "base/out_of_memory.h"
#include "base/uuid.h"

namespace quorvance {
namespace {

constexpr std::int64_t kUnreadableReportCode = 1002;
// Of the two seconds that a dying process gives those who store its crash.
constexpr std::chrono::seconds kMaxTurnWait{1};

PlatformError unreadable(const std::string& name, const std::string& reason) {
  return {"QuorvanceReports", kUnreadableReportCode, "The report " + name + " cannot be read.",
          reason};
}

/// The word that a report's name begins with; empty for another name.
std::string_view categoryWordIn(std::string_view name) {
  const auto found = std::find_if(kReportCategoryWords.begin(), kReportCategoryWords.end(),
                                  [&](std::string_view word) { return name.starts_with(word); });
  return found == kReportCategoryWords.end() ? std::string_view() : *found;
}

// Others set files aside in this folder too.
bool isSetAside(std::string_view name) {
  if (!name.starts_with(kUnreadablePrefix)) return false;
  name.remove_prefix(kUnreadablePrefix.size());
  return !categoryWordIn(name).empty();
}

bool isFull(const std::vector<DocumentEntry>& entries, std::string_view word) {
  const auto count = std::count_if(entries.begin(), entries.end(), [&](const DocumentEntry& entry) {
    return entry.name.starts_with(word);
  });
  return std::cmp_greater_equal(count, kMaxReportsPerCategory);
}

}  // namespace

ReportStore::ReportStore(std::shared_ptr<DocumentsFolder> documents,
                         std::shared_ptr<ExceptionLogger> exceptions,
                         std::shared_ptr<DeliveryLedger> ledger)
    : documents_(std::move(documents)),
      exceptions_(std::move(exceptions)),
      ledger_(std::move(ledger)) {}

void ReportStore::log(const std::optional<PlatformError>& error) const {
  if (error) exceptions_->logException(*error);
}

bool ReportStore::prepare() {
  if (!documents_ || !isCollectionEnabled()) return false;
  if (!documents_->prepare()) {
    // Without any folder that is no error; one that has a place tells what is wrong with it.
    std::vector<DocumentEntry> entries;
    if (documents_->fileSystemPath()) log(documents_->list(entries));
    return false;
  }
  if (!isRecovered_.exchange(true)) recoverUnfinished();
  return true;
}

struct ReportStore::Turn {
  std::unique_lock<BoundedMutex> amongThreads;
  std::unique_ptr<DocumentsLock> amongProcesses;
};

// Whoever stores a crash may be told of it by a thread that died in the midst of its own turn.
ReportStore::Turn ReportStore::waitForTurn() {
  using std::chrono::milliseconds;
  using std::chrono::steady_clock;
  const auto deadline = steady_clock::now() + kMaxTurnWait;
  Turn turn{std::unique_lock(storing_, deadline), nullptr};
  const auto left = std::chrono::duration_cast<milliseconds>(deadline - steady_clock::now());
  const auto timeout = isTurnStalled_ ? milliseconds::zero() : std::max(left, milliseconds::zero());
  turn.amongProcesses = documents_->lockAmongProcesses("reports", timeout);
  if (turn.amongProcesses) {
    isTurnStalled_ = false;
  } else if (timeout > milliseconds::zero()) {
    isTurnStalled_ = true;
  }
  return turn;
}

bool ReportStore::storeReport(const Json& report, ReportCategory category) {
  ReportFate fate = ReportFate::droppedUnwritten;
  hasMemoryFor([&] { fate = tryStore(report, category); });
  ledger_->note(fate);
  return fate == ReportFate::stored;
}

ReportFate ReportStore::tryStore(const Json& report, ReportCategory category) {
  if (!prepare()) return ReportFate::droppedUnwritten;
  const Turn turn = waitForTurn();
  std::vector<DocumentEntry> entries;
  if (const auto error = documents_->list(entries)) {
    log(error);
    return ReportFate::droppedUnwritten;
  }
  const std::string_view word = categoryWord(category);
  if (isFull(entries, word)) return ReportFate::droppedFull;
  const std::optional<std::string> text = writeJsonIndented(report);
  if (!text) {
    log(unreadable("that was made", "It cannot be JSON."));
    return ReportFate::droppedUnwritten;
  }
  if (text->size() > kMaxDocumentBytes) {
    log(unreadable("that was made", "It is longer than a report may be."));
    return ReportFate::droppedUnwritten;
  }
  // A write error is ignored, by contract.
  const auto error = documents_->write(std::string(word) + randomUuid() + ".json", *text);
  return error ? ReportFate::droppedUnwritten : ReportFate::stored;
}

bool ReportStore::eraseAll() {
  if (!documents_) return true;
  const Turn turn = waitForTurn();
  std::vector<DocumentEntry> entries;
  if (const auto error = documents_->list(entries)) {
    return error->code == static_cast<int>(std::errc::no_such_file_or_directory);
  }
  bool isAllGone = true;
  for (const DocumentEntry& entry : entries) {
    if (categoryWordIn(entry.name).empty() && !isSetAside(entry.name)) continue;
    const auto error = documents_->remove(entry.name);
    if (error) isAllGone = false;
    log(error);
  }
  return documents_->removeHidden() && isAllGone;
}

void ReportStore::recoverUnfinished() {
  const Turn turn = waitForTurn();
  const std::vector<UnfinishedDocument> unfinished = documents_->unfinishedDocuments();
  std::vector<DocumentEntry> entries;
  // Who comes next lists the folder too, and logs the error.
  if (unfinished.empty() || documents_->list(entries)) return;
  for (const UnfinishedDocument& one : unfinished) recover(one, entries);
}

// A second writing whose first one is gone was sent already.
void ReportStore::recover(const UnfinishedDocument& unfinished,
                          std::vector<DocumentEntry>& entries) {
  std::string bytes;
  const DocumentRead read = documents_->read(unfinished.temporaryName, bytes);
  if (read.kind == DocumentRead::Kind::failed) return;
  const std::string_view word = categoryWordIn(unfinished.name);
  const auto report = parseJson(bytes);
  const bool isThere = std::any_of(entries.begin(), entries.end(), [&](const DocumentEntry& entry) {
    return entry.name == unfinished.name;
  });
  const bool isWanted = isThere || (!unfinished.isReplacement && !isFull(entries, word));
  if (word.empty() || !report || !report->is_object() || !isWanted) {
    log(documents_->remove(unfinished.temporaryName));
    return;
  }
  log(documents_->rename(unfinished.temporaryName, unfinished.name));
  if (!isThere) entries.push_back({unfinished.name, 0});
}

std::unique_ptr<DocumentsLock> ReportStore::lockUpload(ReportCategory category) {
  if (!prepare()) return nullptr;
  return documents_->lockAmongProcesses("upload-" + std::string(categoryWord(category)),
                                        std::chrono::milliseconds::zero());
}

std::vector<std::string> ReportStore::reportsOf(ReportCategory category) {
  std::vector<std::string> names;
  if (prepare()) log(documents_->listNames(categoryWord(category), names));
  return names;
}

std::optional<Json> ReportStore::readReport(const std::string& name) {
  std::string bytes;
  const DocumentRead read = documents_->read(name, bytes);
  if (read.kind == DocumentRead::Kind::failed) {
    log(read.error);
    return std::nullopt;
  }
  std::optional<Json> report;
  if (read.kind == DocumentRead::Kind::whole) report = parseJson(bytes);
  if (report && report->is_object()) return report;
  ledger_->note(ReportFate::unreadable);
  log(unreadable(name, read.error ? read.error->text() : "It is no JSON object."));
  setAside(name);
  return std::nullopt;
}

void ReportStore::removeReport(const std::string& name) { log(documents_->remove(name)); }

void ReportStore::setAside(const std::string& name) {
  log(documents_->rename(name, std::string(kUnreadablePrefix) + name));
  removeOldestUnreadable();
}

void ReportStore::removeOldestUnreadable() {
  std::vector<DocumentEntry> entries;
  if (documents_->list(entries)) return;  // the next one set aside makes up for it
  std::erase_if(entries, [](const DocumentEntry& entry) { return !isSetAside(entry.name); });
  if (entries.size() <= kMaxUnreadableFiles) return;
  std::sort(entries.begin(), entries.end(), [](const DocumentEntry& a, const DocumentEntry& b) {
    return a.changedNanoseconds > b.changedNanoseconds;
  });
  for (std::size_t i = kMaxUnreadableFiles; i < entries.size(); ++i) {
    log(documents_->remove(entries[i].name));
  }
}

}  // namespace quorvance
