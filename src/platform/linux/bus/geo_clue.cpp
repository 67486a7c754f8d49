#include "platform/linux/bus/geo_clue.h"

#include <atomic>
#include <cmath>
#include <limits>
#include <mutex>
#include <utility>

#include "platform/linux/bus/bus_followed.h"
#include "platform/linux/bus/bus_watch.h"

namespace quorvance {
namespace {

constexpr const char* kGeoClueService = "org.freedesktop.GeoClue2";
constexpr const char* kManagerPath = "/org/freedesktop/GeoClue2/Manager";
constexpr const char* kManager = "org.freedesktop.GeoClue2.Manager";
constexpr const char* kClient = "org.freedesktop.GeoClue2.Client";
constexpr const char* kLocation = "org.freedesktop.GeoClue2.Location";
constexpr const char* kProperties = "org.freedesktop.DBus.Properties";

// The best accuracy that the service knows, and at most one new place in so many seconds.
constexpr std::uint32_t kExact = 8;
constexpr std::uint32_t kSecondsBetweenFixes = 60;

std::string signalRule(const std::string& path, const char* member) {
  return "type='signal',sender='" + std::string(kGeoClueService) + "',path='" + path +
         "',member='" + member + "'";
}

/// The properties of a location; those that it does not know stay unset.
LocationFix readFix(BusReader& reader) {
  LocationFix fix;
  reader.eachEntry("{sv}", "sv", [&] {
    const auto name = reader.text();
    if (name == "Latitude") {
      fix.latitude = reader.realVariant();
    } else if (name == "Longitude") {
      fix.longitude = reader.realVariant();
    } else if (name == "Accuracy") {
      fix.accuracy = reader.realVariant();
    } else if (name == "Altitude") {
      // The smallest number stands for an unknown altitude.
      fix.altitude = reader.realVariant();
      if (fix.altitude == std::numeric_limits<double>::lowest()) fix.altitude.reset();
    } else {
      reader.skip("v");
    }
  });
  return fix;
}

}  // namespace

struct GeoClue::State {
  State(BusPlace place, FindSandbox find, bool isStartAllowed)
      : systemBus(std::move(place)), findSandbox(std::move(find)), mayStart(isStartAllowed) {}

  const BusPlace systemBus;
  const FindSandbox findSandbox;
  const bool mayStart;
  BusFollowed followed;
  std::atomic<bool> isWanted{false};
  std::mutex mutex;
  LocationService service;
  /// The watch thread's own.
  std::weak_ptr<ServiceWatch> watch;

  template <class Change>
  void change(Change&& changeService) {
    const std::lock_guard lock(mutex);
    changeService(service);
  }
  // A place that came late is not kept.
  void take(const LocationFix& fix) {
    change([&](LocationService& current) {
      if (isWanted) current.fix = fix;
    });
  }
};

/// Follows the service: whether it runs, how much it may tell, and, while that is wanted, the
/// client object through which it tells the place.
class GeoClue::ServiceWatch : public BusWatch {
 public:
  explicit ServiceWatch(std::shared_ptr<State> state) : state_(std::move(state)) {}
  ~ServiceWatch() override { state_->followed.ended(state_->systemBus.pause); }
  ServiceWatch(const ServiceWatch&) = delete;
  ServiceWatch& operator=(const ServiceWatch&) = delete;

  /// Begins or ends the client, as is wanted.
  void update() {
    const bool isNeeded = state_->isWanted && isOn_;
    if (isNeeded && !isAsked_) askForClient();
    if (!isNeeded && isAsked_) dropClient();
  }

 protected:
  void begun() override {
    listen("type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',arg0='" +
               std::string(kGeoClueService) + "'",
           [this](BusReader* reader) { ownerChanged(*reader); });
    listen(signalRule(kManagerPath, "PropertiesChanged"), [this](BusReader*) { askManager(); });
    askManager();
  }
  void ended() override { setOn(false); }

 private:
  BusCall onService(std::string path, const char* interface, const char* member) const {
    return {.service = kGeoClueService,
            .path = std::move(path),
            .interface = interface,
            .member = member};
  }

  /// The name, its old and its new owner.
  void ownerChanged(BusReader& reader) {
    reader.skip("ss");
    isAsked_ = false;
    if (reader.text().value_or("").empty()) return setOn(false);
    askManager();
  }

  void askManager() {
    BusCall question = onService(kManagerPath, kProperties, "Get");
    question.texts = {kManager, "AvailableAccuracyLevel"};
    question.mayStart = state_->mayStart;
    call(question, [this](BusReader* reader) {
      setOn(reader != nullptr && reader->numberVariant().value_or(0) > 0);
    });
  }

  void setOn(bool isOn) {
    isOn_ = isOn;
    state_->change([&](LocationService& service) {
      service.isRead = true;
      service.isOn = isOn;
      if (!isOn) service.fix.reset();
    });
    if (isOn) update();
  }

  void askForClient() {
    isAsked_ = true;
    call(onService(kManagerPath, kManager, "GetClient"), [this](BusReader* reader) {
      auto path = reader == nullptr ? std::nullopt : reader->path();
      if (path && isAsked_) startClient(std::move(*path));
    });
  }

  void startClient(std::string path) {
    const bool isNew = path != client_;
    client_ = std::move(path);
    set("DesktopId", state_->findSandbox().application);
    set("RequestedAccuracyLevel", kExact);
    set("TimeThreshold", kSecondsBetweenFixes);
    if (isNew) listen(signalRule(client_, "LocationUpdated"), [this](BusReader* r) { moved(*r); });
    call(onService(client_, kClient, "Start"), [](BusReader*) {});
  }

  /// The place before, and the place of now.
  void moved(BusReader& reader) {
    if (!isAsked_) return;
    reader.skip("o");
    if (const auto place = reader.path()) askPlace(*place);
  }

  template <class Value>
  void set(const char* property, Value value) {
    BusCall change = onService(client_, kProperties, "Set");
    change.texts = {kClient, property};
    change.value = std::move(value);
    call(change, [](BusReader*) {});
  }

  void askPlace(std::string path) {
    BusCall question = onService(std::move(path), kProperties, "GetAll");
    question.texts = {kLocation};
    call(question, [this](BusReader* reader) {
      if (reader != nullptr) state_->take(readFix(*reader));
    });
  }

  void dropClient() {
    isAsked_ = false;
    if (!client_.empty()) call(onService(client_, kClient, "Stop"), [](BusReader*) {});
  }

  const std::shared_ptr<State> state_;
  bool isOn_ = false;
  bool isAsked_ = false;
  std::string client_;
};

GeoClue::GeoClue(BusPlace systemBus, FindSandbox findSandbox, bool mayStart,
                 std::shared_ptr<WatchThread> thread)
    : state_(std::make_shared<State>(std::move(systemBus), std::move(findSandbox), mayStart)),
      thread_(std::move(thread)) {}

GeoClue::~GeoClue() = default;

LocationService GeoClue::service() {
  if (state_->followed.shouldBegin()) {
    thread_->post([state = state_, thread = std::weak_ptr(thread_)] {
      const auto watch = std::make_shared<ServiceWatch>(state);
      state->watch = watch;
      const auto watchThread = thread.lock();
      if (watch->begin(state->systemBus) && watchThread) watchThread->add(watch);
    });
  }
  const std::lock_guard lock(state_->mutex);
  return state_->service;
}

void GeoClue::want(bool isWanted) {
  if (state_->isWanted.exchange(isWanted) == isWanted) return;
  if (!isWanted) {
    state_->change([](LocationService& service) { service.fix.reset(); });
  }
  thread_->post([state = state_] {
    if (const auto watch = state->watch.lock()) watch->update();
  });
}

}  // namespace quorvance
