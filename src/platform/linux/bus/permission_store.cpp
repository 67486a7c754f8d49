#include "platform/linux/bus/permission_store.h"

#include <iterator>
#include <mutex>
#include <optional>
#include <string_view>
#include <utility>

#include "platform/linux/bus/bus_followed.h"
#include "platform/linux/bus/bus_watch.h"

namespace quorvance {
namespace {

constexpr const char* kStoreService = "org.freedesktop.impl.portal.PermissionStore";
constexpr const char* kStorePath = "/org/freedesktop/impl/portal/PermissionStore";

/// One entry of the store that is followed.
struct Entry {
  const char* table;
  const char* id;
  AuthorizationStatus StoredPermissions::*answer;
  AuthorizationStatus (*statusOf)(std::string_view word);
};

AuthorizationStatus cameraStatus(std::string_view word) {
  if (word == "yes") return AuthorizationStatus::authorized;
  return word == "no" ? AuthorizationStatus::denied : AuthorizationStatus::notDetermined;
}

// The word is how exactly the application may know the place. The store knows no "while in use".
AuthorizationStatus locationStatus(std::string_view word) {
  if (word == "NONE") return AuthorizationStatus::denied;
  for (const std::string_view accuracy : {"COUNTRY", "CITY", "NEIGHBORHOOD", "STREET", "EXACT"}) {
    if (word == accuracy) return AuthorizationStatus::authorized;
  }
  return AuthorizationStatus::notDetermined;
}

constexpr Entry kEntries[] = {
    {"devices", "camera", &StoredPermissions::camera, &cameraStatus},
    {"location", "location", &StoredPermissions::location, &locationStatus},
};

/// The first word of the application in an a{sas}; empty when it has none.
std::string wordFor(std::string_view application, BusReader& reader) {
  std::string word;
  reader.eachEntry("{sas}", "sas", [&] {
    const bool isOurs = reader.text() == application;
    std::vector<std::string> words = reader.texts();
    if (isOurs && !words.empty()) word = std::move(words.front());
  });
  return word;
}

}  // namespace

struct PermissionStore::State {
  State(BusPlace place, FindSandbox find, bool isStartAllowed)
      : sessionBus(std::move(place)), findSandbox(std::move(find)), mayStart(isStartAllowed) {}

  const BusPlace sessionBus;
  const FindSandbox findSandbox;
  const bool mayStart;
  BusFollowed followed;
  std::mutex mutex;
  StoredPermissions permissions;

  template <class Change>
  void change(Change&& changePermissions) {
    const std::lock_guard lock(mutex);
    changePermissions(permissions);
  }
};

class PermissionStore::StoreWatch : public BusWatch {
 public:
  explicit StoreWatch(std::shared_ptr<State> state)
      : state_(std::move(state)), sandbox_(state_->findSandbox()) {
    state_->change(
        [this](StoredPermissions& permissions) { permissions.isSandboxed = sandbox_.isSandboxed; });
  }
  ~StoreWatch() override { state_->followed.ended(state_->sessionBus.pause); }
  StoreWatch(const StoreWatch&) = delete;
  StoreWatch& operator=(const StoreWatch&) = delete;

 protected:
  void begun() override {
    listen("type='signal',sender='" + std::string(kStoreService) + "',member='Changed'",
           [this](BusReader* reader) { readChange(*reader); });
    listen("type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',arg0='" +
               std::string(kStoreService) + "'",
           [this](BusReader*) { lookUpAll(); });
    lookUpAll();
  }
  void ended() override {
    state_->change([](StoredPermissions& permissions) { permissions.isRead = true; });
  }

 private:
  void lookUpAll() {
    for (std::size_t i = 0; i < std::size(kEntries); ++i) {
      ++unanswered_;
      call({.service = kStoreService,
            .path = kStorePath,
            .interface = kStoreService,
            .member = "Lookup",
            .texts = {kEntries[i].table, kEntries[i].id},
            .mayStart = state_->mayStart},
           [this, i](BusReader* reader) {
             take(kEntries[i], reader == nullptr ? "" : wordFor(sandbox_.application, *reader));
             if (--unanswered_ > 0) return;
             state_->change([](StoredPermissions& permissions) { permissions.isRead = true; });
           });
    }
  }

  /// Table, id, whether it was deleted, its data, the words by application.
  void readChange(BusReader& reader) {
    const auto table = reader.text();
    const auto id = reader.text();
    const bool isDeleted = reader.truth().value_or(true);
    reader.skip("v");
    const std::string word = isDeleted ? "" : wordFor(sandbox_.application, reader);
    for (const Entry& entry : kEntries) {
      if (table == entry.table && id == entry.id) take(entry, word);
    }
  }

  void take(const Entry& entry, std::string_view word) {
    state_->change(
        [&](StoredPermissions& permissions) { permissions.*entry.answer = entry.statusOf(word); });
  }

  const std::shared_ptr<State> state_;
  const Sandbox sandbox_;
  int unanswered_ = 0;
};

PermissionStore::PermissionStore(BusPlace sessionBus, FindSandbox findSandbox, bool mayStart,
                                 std::shared_ptr<WatchThread> thread)
    : state_(std::make_shared<State>(std::move(sessionBus), std::move(findSandbox), mayStart)),
      thread_(std::move(thread)) {}

PermissionStore::~PermissionStore() = default;

StoredPermissions PermissionStore::permissions() {
  if (state_->followed.shouldBegin()) {
    thread_->post([state = state_, thread = std::weak_ptr(thread_)] {
      const auto watch = std::make_shared<StoreWatch>(state);
      const auto watchThread = thread.lock();
      if (watch->begin(state->sessionBus) && watchThread) watchThread->add(watch);
    });
  }
  const std::lock_guard lock(state_->mutex);
  return state_->permissions;
}

}  // namespace quorvance
