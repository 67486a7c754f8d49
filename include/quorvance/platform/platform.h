#pragma once

// The seam between the library and the system that it runs on: narrow interfaces, carried by one
// plain value. Everything above it is portable and runs in virtual time in tests. Hosts may replace
// any member. Start reading here.

#include <memory>

#include "quorvance/platform/authorization.h"
#include "quorvance/platform/before_send.h"
#include "quorvance/platform/clock.h"
#include "quorvance/platform/crash_trap.h"
#include "quorvance/platform/device_facts.h"
#include "quorvance/platform/documents.h"
#include "quorvance/platform/environment.h"
#include "quorvance/platform/face_detection.h"
#include "quorvance/platform/host_application.h"
#include "quorvance/platform/http.h"
#include "quorvance/platform/identity.h"
#include "quorvance/platform/key_value_store.h"
#include "quorvance/platform/motion.h"
#include "quorvance/platform/queues.h"
#include "quorvance/platform/reachability.h"
#include "quorvance/platform/user_data.h"

#pragma GCC visibility push(default)

namespace quorvance {

/// The groups of device facts; a missing one answers "unknown".
struct DeviceFactSources {
  /// Read with every refresh, and by whichever background thread needs it first; an inspection may
  /// read it at the same time. Of later readings name, locale and time zone are taken.
  std::shared_ptr<FactSource<SystemFacts>> system;
  std::shared_ptr<FactSource<StorageFacts>> storage;
  std::shared_ptr<FactSource<ScreenFacts>> screen;
  std::shared_ptr<FactSource<FontFacts>> fonts;
  std::shared_ptr<FactSource<PostureFacts>> posture;
  std::shared_ptr<PowerSource> power;
  std::shared_ptr<FactSource<AccessibilityFacts>> accessibility;
  std::shared_ptr<FactSource<NetworkFacts>> network;
};

/// Making one is passive: no thread, no file, no bus.
struct Platform {
  // Required: their absence is a programming error and stops the process.
  std::shared_ptr<WallClock> clock;
  std::shared_ptr<MainQueue> mainQueue;
  std::shared_ptr<BackgroundQueue> backgroundQueue;
  std::shared_ptr<HttpSession> http;
  std::shared_ptr<KeyValueStore> defaults;

  // Optional: without one, what it would have told stays unknown, and what it would have kept is
  // dropped.
  std::shared_ptr<DocumentsFolder> documents;
  HostApplication hostApplication;
  std::shared_ptr<IdentitySource> identity;
  std::shared_ptr<EnvironmentSource> environment;
  DeviceFactSources facts;
  std::shared_ptr<AuthorizationSource> authorization;
  std::shared_ptr<LocationSource> location;
  std::shared_ptr<UserDataSourceBase> userData;
  std::shared_ptr<ReachabilityMonitor> reachability;
  std::shared_ptr<MotionSource> motion;
  std::shared_ptr<CrashTrap> crashTrap;
  std::shared_ptr<FaceDetectionBase> faceDetection;
  /// Sees every body before it is sent; empty: they are sent as they are.
  BeforeSend beforeSend{};
};

/// The platform of the system that the library was built for, with the defaults of an application;
/// what a context is made over unless the host chooses another one. Passive. Throws std::bad_alloc
/// alone, and then nothing is left of it.
/// Defined by the platform that is linked.
Platform makeDefaultPlatform();

}  // namespace quorvance

#pragma GCC visibility pop
