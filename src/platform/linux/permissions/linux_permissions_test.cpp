#include <gtest/gtest.h>
#include <sys/syscall.h>

#include <filesystem>
#include <future>
#include <string>
#include <thread>

#include "platform/linux/bus/private_bus_test_support.h"
#include "platform/linux/facts/linux_environment.h"
#include "platform/linux/facts/sandbox.h"
#include "platform/linux/permissions/linux_authorization.h"

namespace quorvance {
namespace {

using Status = AuthorizationStatus;
using Subject = AuthorizationSubject;

constexpr const char* kStoreName = "org.freedesktop.impl.portal.PermissionStore";
constexpr const char* kStoreProgram = "/usr/libexec/xdg-permission-store";

/// The answers of one application on a private bus.
class PermissionsTest : public testing::Test {
 protected:
  std::shared_ptr<PermissionStore> makeStore(bool mayStart = false) {
    return std::make_shared<PermissionStore>(
        bus_.place(timeout_), [sandbox = sandbox_] { return sandbox; }, mayStart, thread_);
  }
  std::shared_ptr<GeoClue> makeGeoClue(bool mayStart = false) {
    return std::make_shared<GeoClue>(
        bus_.place(timeout_), [sandbox = sandbox_] { return sandbox; }, mayStart, thread_);
  }
  PermissionSources makeSources() {
    return {.host = nullptr,
            .hostLocation = nullptr,
            .store = makeStore(),
            .geoClue = makeGeoClue(),
            .cameras = std::make_shared<CameraDevices>(RootFiles(root_.path()), thread_)};
  }
  /// Nothing is asked before the promise is kept.
  std::promise<void> holdThread() {
    std::promise<void> mayAsk;
    thread_->post([go = mayAsk.get_future().share()] { go.wait(); });
    return mayAsk;
  }
  template <class Condition>
  bool holds(Condition condition) {
    return holdsInTime(*thread_, condition);
  }

  std::chrono::milliseconds timeout_ = std::chrono::seconds(20);
  Sandbox sandbox_{true, "com.bank.app"};
  TemporaryFolder root_;
  PrivateBus bus_;
  const std::shared_ptr<WatchThread> thread_ = std::make_shared<WatchThread>();
};

TEST_F(PermissionsTest, TheRealStoreIsFollowed) {
  std::promise<void> mayAsk = holdThread();
  const auto store = makeStore();
  EXPECT_FALSE(store->permissions().isRead);
  mayAsk.set_value();
  EXPECT_TRUE(holds([&] { return store->permissions().isRead; }));
  EXPECT_EQ(store->permissions().camera, Status::notDetermined) << "no store runs";
  bus_.makeStartable(kStoreName, kStoreProgram);
  const auto camera = [&](Status status) {
    return holds([&] { return store->permissions().camera == status; });
  };
  const auto location = [&](Status status) {
    return holds([&] { return store->permissions().location == status; });
  };
  bus_.play("store('devices', 'camera', 'com.bank.app', ['yes'])");
  EXPECT_TRUE(camera(Status::authorized));
  bus_.play("store('devices', 'camera', 'com.other.app', ['no'])");
  bus_.play("store('devices', 'microphone', 'com.bank.app', ['no'])");
  bus_.play("store('location', 'location', 'com.bank.app', ['CITY', '0'])");
  EXPECT_TRUE(location(Status::authorized));
  EXPECT_EQ(store->permissions().camera, Status::authorized);
  bus_.play("store('location', 'location', 'com.bank.app', ['NONE', '0'])");
  EXPECT_TRUE(location(Status::denied));
  bus_.play("store('devices', 'camera', 'com.bank.app', ['no'])");
  EXPECT_TRUE(camera(Status::denied));
  bus_.play("store('devices', 'camera', 'com.bank.app', ['ask'])");
  EXPECT_TRUE(camera(Status::notDetermined));
  bus_.play("store('devices', 'camera', 'com.bank.app', ['yes'])");
  const auto later = makeStore();
  EXPECT_TRUE(holds([&] { return later->permissions().isRead; }));
  EXPECT_EQ(later->permissions().camera, Status::authorized) << "what was there before";
  EXPECT_EQ(later->permissions().location, Status::denied);
  bus_.play("forget('devices', 'camera')");
  EXPECT_TRUE(camera(Status::notDetermined));
}

TEST_F(PermissionsTest, OnlyWithTheHostsLeaveAQuestionStartsAService) {
  bus_.makeStartable(kStoreName, kStoreProgram);
  bus_.makeStartable("org.freedesktop.GeoClue2", "/bin/touch " + bus_.folder().at("started"));
  const auto hasOwner = [&] {
    bus_.mock().say("say(bus.name_has_owner('" + std::string(kStoreName) + "'))");
    const std::string answer = bus_.mock().hear();
    EXPECT_EQ(bus_.mock().hear(), "done");
    return answer == "True";
  };
  for (const bool mayStart : {false, true}) {
    timeout_ = std::chrono::seconds(20);
    const auto store = makeStore(mayStart);
    timeout_ = std::chrono::seconds(2);  // what is started here for GeoClue never answers
    const auto service = makeGeoClue(mayStart);
    EXPECT_TRUE(holds([&] { return store->permissions().isRead; }));
    EXPECT_TRUE(holds([&] { return service->service().isRead; }));
    EXPECT_EQ(hasOwner(), mayStart);
    const std::string mark = bus_.folder().at("started");
    EXPECT_TRUE(holds([&] { return std::filesystem::exists(mark) == mayStart; }));
  }
}

TEST_F(PermissionsTest, ThePlaceIsFollowedWhileItIsWanted) {
  const auto service = makeGeoClue();
  EXPECT_TRUE(holds([&] { return service->service().isRead; }));
  EXPECT_FALSE(service->service().isOn) << "it does not run";
  bus_.play("geo_clue(0)");
  bus_.play("accuracy_level(8)");
  EXPECT_TRUE(holds([&] { return service->service().isOn; }));
  service->want(true);
  service->want(true);
  EXPECT_EQ(bus_.mock().hear(), "start com.bank.app 8 60");
  bus_.play("place(52.5, 13.4, 25.0, -1.7976931348623157e308)");
  EXPECT_TRUE(holds([&] { return service->service().fix.has_value(); }));
  const LocationFix fix = service->service().fix.value_or(LocationFix{});
  EXPECT_EQ(fix.latitude, 52.5);
  EXPECT_EQ(fix.longitude, 13.4);
  EXPECT_EQ(fix.accuracy, 25.0);
  EXPECT_EQ(fix.altitude, std::nullopt) << "the number that stands for unknown";
  bus_.play("place(52.6, 13.4, 5.0, 34.5)");
  EXPECT_TRUE(holds([&] { return service->service().fix->altitude == 34.5; }));
  service->want(false);
  EXPECT_EQ(service->service().fix, std::nullopt);
  EXPECT_EQ(bus_.mock().hear(), "stop com.bank.app 8 60");
  bus_.play("place(1.0, 2.0, 3.0, 4.0)");
  bus_.play("accuracy_level(0)");
  EXPECT_TRUE(holds([&] { return !service->service().isOn; })) << "both signals have been seen";
  bus_.play("accuracy_level(8)");
  EXPECT_TRUE(holds([&] { return service->service().isOn; }));
  service->want(true);
  EXPECT_EQ(bus_.mock().hear(), "start com.bank.app 8 60");
  EXPECT_EQ(service->service().fix, std::nullopt) << "a place that nobody wanted";
}

TEST_F(PermissionsTest, AServiceThatGoesTellsNothingAndOneThatComesBackIsAskedAgain) {
  bus_.play("geo_clue(8)");
  std::promise<void> mayAsk = holdThread();
  const auto service = makeGeoClue();
  service->want(true);
  EXPECT_FALSE(service->service().isOn);
  mayAsk.set_value();
  EXPECT_EQ(bus_.mock().hear(), "start com.bank.app 8 60");
  bus_.play("place(52.5, 13.4, 25.0, 34.5)");
  EXPECT_TRUE(holds([&] { return service->service().fix.has_value(); }));
  bus_.play("leave('org.freedesktop.GeoClue2')");
  EXPECT_TRUE(holds([&] { return !service->service().isOn; }));
  EXPECT_EQ(service->service().fix, std::nullopt);
  bus_.play("bus.request_name('org.freedesktop.GeoClue2')");
  EXPECT_EQ(bus_.mock().hear(), "start com.bank.app 8 60");
  bus_.daemon().signalWith(SIGKILL);
  EXPECT_TRUE(holds([&] { return !service->service().isOn; })) << "the bus went away";
}

// Until the first reading has ended, which a service that hangs puts off by its timeout.
TEST_F(PermissionsTest, WhileNobodyAnswersLocationIsOnAndNothingDetermined) {
  constexpr int kHangAttempts = 5;
  constexpr std::chrono::milliseconds kMaxHangCost{1500};
  timeout_ = kBusTimeout;
  bus_.play("geo_clue(8)");
  for (const bool isDaemon : {false, true}) {
    const TalkingProcess& hung = isDaemon ? bus_.daemon() : bus_.mock();
    hung.signalWith(SIGSTOP);
    auto cost = std::chrono::steady_clock::duration::max();
    // Again where the machine stood still meanwhile.
    for (int i = 0; i < kHangAttempts && cost >= kMaxHangCost; ++i) {
      const PermissionSources sources = makeSources();
      LinuxAuthorization authorization(sources);
      const auto start = std::chrono::steady_clock::now();
      // Whoever waited for an answer here would wait for ever.
      std::promise<void> mayAsk = holdThread();
      EXPECT_TRUE(authorization.locationServicesEnabled());
      EXPECT_EQ(authorization.status(Subject::location), Status::notDetermined);
      EXPECT_EQ(authorization.status(Subject::camera), Status::notDetermined);
      mayAsk.set_value();
      EXPECT_TRUE(holds([&] { return !authorization.locationServicesEnabled(); }));
      cost = std::chrono::steady_clock::now() - start;
      EXPECT_TRUE(holds([&] { return sources.store->permissions().isRead; }));
    }
    EXPECT_LT(cost, kMaxHangCost);
    hung.signalWith(SIGCONT);
  }
}

TEST_F(PermissionsTest, AServiceThatHungIsAskedAgainByALaterQuestion) {
  timeout_ = kBusTimeout;
  bus_.play("geo_clue(8)");
  bus_.mock().signalWith(SIGSTOP);
  const auto service = makeGeoClue();
  EXPECT_TRUE(holds([&] { return service->service().isRead; }));
  EXPECT_FALSE(service->service().isOn);
  bus_.mock().signalWith(SIGCONT);
  EXPECT_TRUE(holds([&] { return service->service().isOn; }));
}

class FixedAuthorization : public HostAuthorization {
 public:
  std::optional<Status> status(Subject subject) override {
    if (subject == Subject::contacts) return Status::authorized;
    return subject == Subject::location ? answer : std::nullopt;
  }
  std::optional<Status> answer = Status::authorizedWhenInUse;
};

class FixedLocation : public LocationSource {
 public:
  std::optional<LocationFix> lastFix() override { return fix; }
  std::optional<LocationFix> fix = LocationFix{.latitude = 47.0};
};

TEST_F(PermissionsTest, TheHostAnswersBeforeTheSystem) {
  PermissionSources sources = makeSources();
  const auto host = std::make_shared<FixedAuthorization>();
  const auto place = std::make_shared<FixedLocation>();
  sources.host = host;
  sources.hostLocation = place;
  LinuxAuthorization authorization(sources);
  LinuxLocation location(sources);
  EXPECT_TRUE(authorization.locationServicesEnabled());
  EXPECT_EQ(authorization.status(Subject::location), Status::authorizedWhenInUse);
  EXPECT_EQ(authorization.status(Subject::contacts), Status::authorized);
  for (const Subject subject : {Subject::photos, Subject::events, Subject::reminders}) {
    EXPECT_EQ(authorization.status(subject), Status::notDetermined);
  }
  EXPECT_EQ(location.lastFix().value_or(LocationFix{}).latitude, 47.0);
  bus_.play("geo_clue(8)");
  place->fix.reset();
  EXPECT_EQ(location.lastFix(), std::nullopt);
  EXPECT_EQ(bus_.mock().hear(), "start com.bank.app 8 60") << "the system's place, then";
  host->answer = Status::denied;
  EXPECT_EQ(authorization.status(Subject::location), Status::denied);
  EXPECT_EQ(bus_.mock().hear(), "stop com.bank.app 8 60");
}

TEST_F(PermissionsTest, OutsideOfSandboxesTheDevicesDecideOnTheCamera) {
  sandbox_.isSandboxed = false;
  std::filesystem::create_directories(root_.at("dev"));
  const PermissionSources sources = makeSources();
  LinuxAuthorization authorization(sources);
  const auto becomes = [&](Status status) {
    return holds([&] { return authorization.status(Subject::camera) == status; });
  };
  EXPECT_TRUE(holds([&] { return sources.store->permissions().isRead; }));
  EXPECT_TRUE(becomes(Status::notDetermined)) << "no camera";
  root_.put("dev/sound", "");
  root_.put("dev/video1", "");
  EXPECT_TRUE(becomes(Status::authorized));
  std::filesystem::remove(root_.at("dev/video1"));
  EXPECT_TRUE(becomes(Status::notDetermined));
  bus_.makeStartable(kStoreName, kStoreProgram);
  bus_.play("store('devices', 'camera', 'com.bank.app', ['yes'])");
  EXPECT_TRUE(holds([&] { return sources.store->permissions().camera == Status::authorized; }));
  EXPECT_EQ(authorization.status(Subject::camera), Status::notDetermined);
}

// Of one thread alone, as the kernel lets it.
TEST_F(PermissionsTest, ACameraThatMayNotBeOpenedIsDenied) {
  if (geteuid() != 0) GTEST_SKIP() << "needs root";
  root_.put("dev/video0", "");
  std::filesystem::permissions(root_.path(), std::filesystem::perms::all);
  std::filesystem::permissions(root_.at("dev/video0"), std::filesystem::perms::none);
  constexpr int kNobody = 65534;
  const auto cameras = std::make_shared<CameraDevices>(RootFiles(root_.path()), thread_);
  thread_->post([cameras] {
    syscall(SYS_setresuid, kNobody, kNobody, kNobody);
    cameras->status();  // asked here alone: the thread that reads is then still this one
  });
  EXPECT_TRUE(holds([&] { return cameras->hasRead(); }));
  EXPECT_EQ(cameras->status(), Status::denied);
}

TEST(SandboxTest, KnowsItsApplicationByTheSandboxesOwnName) {
  TemporaryFolder root;
  LinuxEnvironment plain({});
  LinuxEnvironment snap(LinuxEnvironment::Variables{{"SNAP_INSTANCE_NAME", "bank_2"}});
  const auto text = [&](LinuxEnvironment& environment) {
    const Sandbox sandbox = sandboxOf(environment, RootFiles(root.path()), "com.bank.app");
    return (sandbox.isSandboxed ? "in " : "out ") + sandbox.application;
  };
  EXPECT_EQ(text(plain), "out com.bank.app");
  EXPECT_EQ(text(snap), "in snap.bank_2");
  root.put(".flatpak-info", "[Instance]\nname=x\n[Application]\nname=org.bank.App\n");
  EXPECT_EQ(text(snap), "in org.bank.App");
  root.put(".flatpak-info", "[Application]\nruntime=r\n[Other]\nname=x\n");
  EXPECT_EQ(text(plain), "in com.bank.app");
}

}  // namespace
}  // namespace quorvance
