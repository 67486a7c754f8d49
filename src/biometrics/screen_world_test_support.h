#pragma once

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "base/json_test_support.h"
#include "biometrics/capturing_screen_listener.h"
#include "platform/testing/fake_motion.h"
#include "platform/testing/fake_view.h"
#include "platform/testing/test_world.h"

namespace quorvance {

/// Every reading is noted and a second later than the one before, the first at 1000 ms.
class CountingClock : public WallClock {
 public:
  explicit CountingClock(std::shared_ptr<CallList> calls) : calls_(std::move(calls)) {}
  double secondsSince1970() override {
    calls_->push_back("clock");
    return ++readings_;
  }

 private:
  const std::shared_ptr<CallList> calls_;
  double readings_ = 0;
};

/// A manager that sends nothing: it keeps the bodies.
class KeepingOwner : public ScreenListenerOwner {
 public:
  explicit KeepingOwner(std::shared_ptr<CallList> calls) : calls_(std::move(calls)) {}

  std::optional<std::string> user = "u1";
  std::vector<Json> bodies;
  /// Of the calls that wait for their reply.
  std::vector<ReplyHandler> waiting;

  std::optional<std::string> userId() const override { return user; }
  PreparedCall prepareCall(Service service) override {
    calls_->push_back("prepare " + std::string(rowOf(service).path));
    PreparedCall call;
    call.service = service;
    return call;
  }
  void sendCall(const PreparedCall& call, Json body, ReplyHandler handler) override {
    calls_->push_back("send " + std::string(rowOf(call.service).path));
    keep(std::move(body), std::move(handler));
  }
  void sendImage(Json body, ReplyHandler handler) override {
    calls_->push_back("send image");
    keep(std::move(body), std::move(handler));
  }

 private:
  void keep(Json body, ReplyHandler handler) {
    bodies.push_back(std::move(body));
    waiting.push_back(std::move(handler));
  }

  const std::shared_ptr<CallList> calls_;
};

/// The queue on which reports wait for the disk.
class NotedReportQueue : public BackgroundQueue {
 public:
  NotedReportQueue(std::shared_ptr<CallList> calls, std::shared_ptr<BackgroundQueue> queue)
      : calls_(std::move(calls)), queue_(std::move(queue)) {}
  void post(WorkLane lane, Task task) override {
    calls_->push_back("report");
    queue_->post(lane, std::move(task));
  }

 private:
  const std::shared_ptr<CallList> calls_;
  const std::shared_ptr<BackgroundQueue> queue_;
};

/// A screen over doubles that note what they are asked, in one list.
struct ScreenWorld : TestWorld {
  ScreenWorld() {
    motion->calls = calls;
    view->calls = calls;
    config.appRunMode = AppRunMode::DEVELOPMENT;
    config.enableBioCollection = true;
    config.activityMap = true;
  }
  ~ScreenWorld() { owner->waiting.clear(); }

  ScreenServices makeServices() {
    return {state,
            tracing,
            reports,
            {"com.bank.app", "4.2"},
            time,
            time,
            hasMotion ? motion : nullptr,
            std::make_shared<FaceVerification>(face, authorization, state, time),
            ledger};
  }

  /// The listener of screen 7, and nothing noted so far.
  void begin() {
    state->replaceSdkConfig(config);
    services = std::make_shared<const ScreenServices>(makeServices());
    listener = CapturingScreenListener::make(services, owner, ScreenListenerType::PINCODE, 7, view);
    calls->clear();
  }

  /// What was noted since the last time.
  CallList noted() { return std::exchange(*calls, {}); }
  CallList notedOf(GestureState state_, GesturePoint place = {10, 10}) {
    noted();
    view->touch(state_, place);
    return noted();
  }
  void move(MotionSensor sensor, MotionSample sample) {
    motion->deliver(sensor, sample);
    time->run();
  }
  void finish() {
    listener->finishScreenListener();
    time->run();
  }
  ScreenRecording& recording() { return listener->recording(); }
  /// The rows that an upload would hold now.
  BioSensorEventData rows() {
    recording().takeSnapshot();
    return *recording().takeSnapshotRows({ScreenListenerType::PINCODE, 7});
  }

  std::shared_ptr<CallList> calls = std::make_shared<CallList>();
  std::shared_ptr<CountingClock> clock = std::make_shared<CountingClock>(calls);
  std::shared_ptr<InnerQuorvanceData> state =
      std::make_shared<InnerQuorvanceData>(clock, store, identity);
  std::shared_ptr<SystemTexts> texts = std::make_shared<SystemTexts>(environment, nullptr);
  std::shared_ptr<TracingManager> tracing = std::make_shared<TracingManager>(state, texts);
  std::shared_ptr<DeliveryLedger> ledger = std::make_shared<DeliveryLedger>();
  std::shared_ptr<ReportKeeper> reports = std::make_shared<ReportKeeper>(
      std::make_shared<ReportStore>(documents, std::make_shared<ExceptionLogger>(tracing), ledger),
      std::make_shared<NotedReportQueue>(calls, time), texts, ledger);
  std::shared_ptr<KeepingOwner> owner = std::make_shared<KeepingOwner>(calls);
  std::shared_ptr<FakeMotion> motion = std::make_shared<FakeMotion>(time);
  /// 100 points wide and high, at (0, 50) in its parent, with one subview in its upper left.
  std::shared_ptr<FakeView> view = std::make_shared<FakeView>(ViewFrame{0, 50, 100, 100}, 5);
  std::shared_ptr<FakeView> subview = view->add({0, 0, 20, 20}, 70);
  SdkConfig config;
  bool hasMotion = true;
  std::shared_ptr<const ScreenServices> services;
  std::shared_ptr<CapturingScreenListener> listener;
};

}  // namespace quorvance
