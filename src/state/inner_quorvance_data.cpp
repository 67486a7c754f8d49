#include "state/inner_quorvance_data.h"

#include <algorithm>
#include <array>
#include <utility>

#include "base/milliseconds.h"
#include "base/ordered_table.h"
#include "base/uuid.h"

namespace quorvance {
namespace {

struct KeyRow {
  StoredKey key;
  // The storage format: the mixed styles stay.
  std::string_view name;
  bool isPersistent;
};

constexpr std::array<KeyRow, 6> kKeyRows = {{
    {StoredKey::permissionList, "permissionList", true},
    {StoredKey::deviceId, "deviceId", true},
    {StoredKey::userId, "user_id", true},
    {StoredKey::sessionTime, "QV_SESSION_TIME", false},
    {StoredKey::sessionId, "QV_SESSION_ID", false},
    {StoredKey::serverUrl, "serverUrl", true},
}};
static_assert(isOrderedBy<&KeyRow::key>(kKeyRows, StoredKey::serverUrl));

const KeyRow& rowOf(StoredKey key) { return kKeyRows[static_cast<std::size_t>(key)]; }

bool isAbsent(const StoredValue& value) { return std::holds_alternative<std::monostate>(value); }

}  // namespace

InnerQuorvanceData::InnerQuorvanceData(std::shared_ptr<WallClock> clock,
                                       std::shared_ptr<KeyValueStore> defaults,
                                       std::shared_ptr<IdentitySource> identity)
    : clock_(std::move(clock)), defaults_(std::move(defaults)), identity_(std::move(identity)) {}

std::int64_t InnerQuorvanceData::now() const {
  return millisecondsFromSeconds(clock_->secondsSince1970());
}

std::optional<std::string> InnerQuorvanceData::vendorIdentifier() const {
  return identity_ ? identity_->vendorIdentifier() : std::nullopt;
}

StoredValue InnerQuorvanceData::read(StoredKey key) {
  return rowOf(key).isPersistent ? readPersistent(key) : readMemory(key);
}

StoredValue InnerQuorvanceData::readPersistent(StoredKey key) {
  const std::lock_guard lock(persistentMutex_);
  StoredEntry entry = defaults_->read(rowOf(key).name);
  if (entry.kind == StoredEntry::Kind::text) return std::move(entry.text);
  if (entry.kind == StoredEntry::Kind::other) return OtherStoredValue{};
  StoredValue value = defaultValue(key);
  if (const auto* text = std::get_if<std::string>(&value)) {
    defaults_->writeDefault(rowOf(key).name, *text);
    defaults_->synchronize();
  }
  return value;
}

// Under the mutex.
void InnerQuorvanceData::writePersistent(StoredKey key, const StoredValue& value) {
  const auto* text = std::get_if<std::string>(&value);
  if (text == nullptr) return;
  defaults_->write(rowOf(key).name, *text);
  defaults_->synchronize();
}

// Two threads that read first must get one value, so the test and the store share the lock; the
// default is computed before it, since it asks the platform.
StoredValue InnerQuorvanceData::readMemory(StoredKey key) {
  for (;;) {
    identifyBegunSession();
    {
      const std::lock_guard lock(mutex_);
      const auto found = dictData_.find(rowOf(key).name);
      if (found != dictData_.end()) return found->second;
    }
    StoredValue fresh = defaultValue(key);
    const std::lock_guard lock(mutex_);
    // One that was begun meanwhile is the session, and not this default.
    if (!begunSession_) {
      return dictData_.emplace(rowOf(key).name, std::move(fresh)).first->second;
    }
  }
}

std::optional<std::string> InnerQuorvanceData::readText(StoredKey key) {
  StoredValue value = read(key);
  auto* text = std::get_if<std::string>(&value);
  return text == nullptr ? std::nullopt : std::optional(std::move(*text));
}

StoredValue InnerQuorvanceData::defaultValue(StoredKey key) {
  switch (key) {
    case StoredKey::permissionList:
      return std::string();
    case StoredKey::deviceId:
      return std::string(kNoDeviceId);
    case StoredKey::userId:
      return std::string(kUnknownUser);
    case StoredKey::sessionTime:
      return now();
    case StoredKey::sessionId:
      return newSessionId();
    case StoredKey::serverUrl:
      break;
  }
  return std::monostate();
}

std::string InnerQuorvanceData::newSessionId() {
  const std::int64_t time = now();
  std::int64_t number = 0;
  {
    const std::lock_guard lock(mutex_);
    number = nextSessionNumber(time);
  }
  return sessionIdWith(number);
}

// Under the mutex. Two sessions of one millisecond must differ: the number never repeats and never
// goes back.
std::int64_t InnerQuorvanceData::nextSessionNumber(std::int64_t time) {
  lastSessionNumber_ = lastSessionNumber_ ? std::max(time, *lastSessionNumber_ + 1) : time;
  return *lastSessionNumber_;
}

std::string InnerQuorvanceData::sessionIdWith(std::int64_t number) const {
  const std::optional<std::string> vendor = vendorIdentifier();
  return (vendor ? *vendor : randomUuid()) + "-" + std::to_string(number);
}

SessionMark InnerQuorvanceData::markSession() {
  if (std::optional<Session> session = knownSession()) return {std::move(*session), nullptr};
  const std::int64_t numbered = now();
  const std::int64_t time = now();
  {
    const std::lock_guard lock(mutex_);
    if (dictData_.empty()) {
      if (!begunSession_) {
        auto begun = std::make_shared<BegunSession>(BegunSession{0, time});
        begun->number = nextSessionNumber(numbered);
        begunSession_ = std::move(begun);
      }
      return {Session(), begunSession_};
    }
  }
  return {currentSession(), nullptr};
}

Session InnerQuorvanceData::sessionOf(const SessionMark& mark) {
  if (!mark.begun) return mark.known;
  BegunSession& begun = *mark.begun;
  {
    const std::lock_guard lock(mutex_);
    if (begun.id && begunSession_ != mark.begun) return {*begun.id, begun.time};
  }
  std::string id = sessionIdWith(begun.number);
  const std::lock_guard lock(mutex_);
  if (!begun.id) begun.id = std::move(id);
  if (begunSession_ == mark.begun) {
    auto changed = dictData_;
    changed.emplace(rowOf(StoredKey::sessionId).name, *begun.id);
    changed.emplace(rowOf(StoredKey::sessionTime).name, begun.time);
    dictData_.swap(changed);
    begunSession_ = nullptr;
  }
  return {*begun.id, begun.time};
}

void InnerQuorvanceData::identifyBegunSession() {
  SessionMark mark;
  {
    const std::lock_guard lock(mutex_);
    mark.begun = begunSession_;
  }
  if (mark.begun) sessionOf(mark);
}

void InnerQuorvanceData::write(StoredKey key, const StoredValue& value) {
  if (isAbsent(value)) return;
  const KeyRow& row = rowOf(key);
  if (row.isPersistent) {
    const std::lock_guard lock(persistentMutex_);
    writePersistent(key, value);
  } else {
    identifyBegunSession();
    const std::lock_guard lock(mutex_);
    dictData_.insert_or_assign(std::string(row.name), value);
  }
}

void InnerQuorvanceData::startNewSession() {
  StoredValue id = defaultValue(StoredKey::sessionId);
  StoredValue time = defaultValue(StoredKey::sessionTime);
  // In one step: nobody reads the identifier of one session with the time of another, nor do they
  // part where memory ends.
  const std::lock_guard lock(mutex_);
  auto changed = dictData_;
  changed.insert_or_assign(std::string(rowOf(StoredKey::sessionId).name), std::move(id));
  changed.insert_or_assign(std::string(rowOf(StoredKey::sessionTime).name), std::move(time));
  dictData_.swap(changed);
  begunSession_ = nullptr;
}

void InnerQuorvanceData::forget() {
  {
    const std::lock_guard lock(persistentMutex_);
    if (!defaults_->forget()) {
      for (const KeyRow& row : kKeyRows) {
        if (!row.isPersistent) continue;
        const StoredValue value = defaultValue(row.key);
        const auto* text = std::get_if<std::string>(&value);
        defaults_->write(row.name, text == nullptr ? std::string_view() : *text);
      }
    }
  }
  const std::lock_guard lock(mutex_);
  dictData_.clear();
  begunSession_ = nullptr;
  ++erasures_;
}

Session InnerQuorvanceData::currentSession() {
  for (;;) {
    if (std::optional<Session> session = knownSession()) return std::move(*session);
    // A first read makes both; an erasure may come in between.
    read(StoredKey::sessionId);
    read(StoredKey::sessionTime);
  }
}

std::optional<Session> InnerQuorvanceData::knownSession() {
  const std::lock_guard lock(mutex_);
  const auto id = dictData_.find(rowOf(StoredKey::sessionId).name);
  const auto time = dictData_.find(rowOf(StoredKey::sessionTime).name);
  if (id == dictData_.end() || time == dictData_.end()) return std::nullopt;
  const auto* text = std::get_if<std::string>(&id->second);
  const auto* milliseconds = std::get_if<std::int64_t>(&time->second);
  return Session{text == nullptr ? std::string() : *text,
                 milliseconds == nullptr ? 0 : *milliseconds};
}

std::shared_ptr<const SdkConfig> InnerQuorvanceData::sdkConfig() const {
  const std::lock_guard lock(configMutex_);
  return sdkConfig_;
}

void InnerQuorvanceData::replaceSdkConfig(SdkConfig config) {
  auto fresh = std::make_shared<const SdkConfig>(std::move(config));
  const std::lock_guard lock(configMutex_);
  traceLevels_.set(fresh->tracingDataQvData);
  sdkConfig_.swap(fresh);
}

}  // namespace quorvance
