#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <variant>

#include "quorvance/platform/clock.h"
#include "quorvance/platform/identity.h"
#include "quorvance/platform/key_value_store.h"
#include "state/sdk_config.h"
#include "state/session.h"
#include "state/trace_levels.h"

namespace quorvance {

/// A session lives in memory only, so every process starts without one; the others persist.
enum class StoredKey { permissionList, deviceId, userId, sessionTime, sessionId, serverUrl };

/// What stands under a key that is neither text nor integer.
struct OtherStoredValue {
  friend bool operator==(const OtherStoredValue&, const OtherStoredValue&) = default;
};

/// monostate = absent.
using StoredValue = std::variant<std::monostate, std::string, std::int64_t, OtherStoredValue>;

/// A session whose identifier is still to be made; guarded by the state.
struct BegunSession {
  std::int64_t number = 0;
  std::int64_t time = 0;
  std::optional<std::string> id{};
};

/// A session as it was at one moment: known, or begun.
struct SessionMark {
  Session known{};
  std::shared_ptr<BegunSession> begun = nullptr;
};

/// The state behind the library: stored identifiers, the running session, the configuration in
/// force. Any thread; a write is finished when it returns, so that a read after it sees it.
class InnerQuorvanceData {
 public:
  InnerQuorvanceData(std::shared_ptr<WallClock> clock, std::shared_ptr<KeyValueStore> defaults,
                     std::shared_ptr<IdentitySource> identity);

  /// The stored value. When nothing is stored the default is computed, stored and returned, so the
  /// first read makes the value that later reads return; an absent default stores nothing.
  StoredValue read(StoredKey key);
  /// The read value when it is text.
  std::optional<std::string> readText(StoredKey key);
  /// Computed afresh at each call: a new time, a new session identifier.
  StoredValue defaultValue(StoredKey key);
  /// An absent value changes nothing.
  void write(StoredKey key, const StoredValue& value);

  /// The identifier of a new session is written before its time.
  void startNewSession();
  Session currentSession();

  /// The session of now, for who needs its identifier later: it begins with the vendor's, which may
  /// have to be read first. A session that nobody has read yet begins here.
  SessionMark markSession();
  /// The same for every mark of one session, also once it has been replaced.
  Session sessionOf(const SessionMark& mark);

  /// All but the configuration is gone, in memory at once and on the disk as after a write: the
  /// next reads are those of a fresh installation.
  void forget();
  /// How often that was done. Whoever keeps a value of before compares.
  std::uint64_t erasures() const { return erasures_; }

  std::shared_ptr<const SdkConfig> sdkConfig() const;
  void replaceSdkConfig(SdkConfig config);
  const TraceLevels& traceLevels() const { return traceLevels_; }

  /// Milliseconds since 1970, now.
  std::int64_t now() const;
  /// The vendor identifier as upper-case UUID text; absent when the platform gives none.
  std::optional<std::string> vendorIdentifier() const;

 private:
  StoredValue readPersistent(StoredKey key);
  void writePersistent(StoredKey key, const StoredValue& value);
  StoredValue readMemory(StoredKey key);
  std::optional<Session> knownSession();
  void identifyBegunSession();
  std::string newSessionId();
  std::int64_t nextSessionNumber(std::int64_t time);
  std::string sessionIdWith(std::int64_t number) const;

  const std::shared_ptr<WallClock> clock_;
  const std::shared_ptr<KeyValueStore> defaults_;
  const std::shared_ptr<IdentitySource> identity_;

  // Makes one step of a first read and of the default that it stores: a write between them must
  // win.
  std::mutex persistentMutex_;
  // Guards dictData_, the begun session and lastSessionNumber_.
  std::mutex mutex_;
  std::map<std::string, StoredValue, std::less<>> dictData_;
  // Stands for both entries of a session that has no identifier yet.
  std::shared_ptr<BegunSession> begunSession_;
  std::optional<std::int64_t> lastSessionNumber_;

  std::atomic<std::uint64_t> erasures_{0};

  mutable std::mutex configMutex_;
  std::shared_ptr<const SdkConfig> sdkConfig_ = std::make_shared<const SdkConfig>();
  TraceLevels traceLevels_;
};

/// What the server's device identifier is until one has come.
inline constexpr std::string_view kNoDeviceId = "no_device_id";
/// The user while none has signed in.
inline constexpr std::string_view kUnknownUser = "UNKNOWN";

}  // namespace quorvance
