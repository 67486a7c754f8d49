#include "diagnostics/report_store.h"

#include <algorithm>
#include <utility>

#include "base/uuid.h"

namespace quorvance {
namespace {

constexpr std::int64_t kUnreadableReportCode = 1002;

PlatformError unreadable(const std::string& name, const std::string& reason) {
  return {"QuorvanceReports", kUnreadableReportCode, "The report " + name + " cannot be read.",
          reason};
}

// Others set files aside in this folder too.
bool isSetAside(std::string_view name) {
  if (!name.starts_with(kUnreadablePrefix)) return false;
  name.remove_prefix(kUnreadablePrefix.size());
  return std::any_of(kReportCategoryWords.begin(), kReportCategoryWords.end(),
                     [&](std::string_view word) { return name.starts_with(word); });
}

}  // namespace

ReportStore::ReportStore(std::shared_ptr<DocumentsFolder> documents,
                         std::shared_ptr<ExceptionLogger> exceptions)
    : documents_(std::move(documents)), exceptions_(std::move(exceptions)) {}

void ReportStore::log(const std::optional<PlatformError>& error) const {
  if (error) exceptions_->logException(*error);
}

bool ReportStore::storeReport(const Json& report, ReportCategory category) {
  if (!documents_ || !documents_->prepare()) return false;
  const std::lock_guard lock(storing_);
  std::vector<DocumentEntry> entries;
  if (const auto error = documents_->list(entries)) {
    log(error);
    return false;
  }
  const std::string_view word = categoryWord(category);
  const auto count = std::count_if(entries.begin(), entries.end(), [&](const DocumentEntry& entry) {
    return entry.name.starts_with(word);
  });
  if (std::cmp_greater_equal(count, kMaxReportsPerCategory)) return false;
  const std::optional<std::string> text = writeJsonIndented(report);
  if (!text) {
    log(unreadable("that was made", "It cannot be JSON."));
    return false;
  }
  // A write error is ignored, by contract.
  return !documents_->write(std::string(word) + randomUuid() + ".json", *text).has_value();
}

std::vector<std::string> ReportStore::reportsOf(ReportCategory category) const {
  std::vector<std::string> names;
  std::vector<DocumentEntry> entries;
  if (!documents_ || !documents_->prepare()) return names;
  log(documents_->list(entries));
  for (DocumentEntry& entry : entries) {
    if (entry.name.starts_with(categoryWord(category))) names.push_back(std::move(entry.name));
  }
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
