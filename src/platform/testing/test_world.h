#pragma once

#include <memory>

#include "platform/testing/fake_device.h"
#include "platform/testing/manual_executor.h"
#include "platform/testing/memory_documents.h"
#include "platform/testing/memory_store.h"
#include "platform/testing/scripted_http.h"
#include "quorvance/platform/platform.h"

namespace quorvance {

/// All doubles of one test, and the platform made of them. At its end it drops the work that waits,
/// which opens the circle of queue, work, manager, platform and queue.
struct TestWorld {
  TestWorld();
  ~TestWorld();
  TestWorld(const TestWorld&) = delete;
  TestWorld& operator=(const TestWorld&) = delete;

  Platform platform() const;

  std::shared_ptr<ManualExecutor> time = std::make_shared<ManualExecutor>();
  std::shared_ptr<ScriptedHttp> http = std::make_shared<ScriptedHttp>(time);
  std::shared_ptr<MemoryStore> store = std::make_shared<MemoryStore>();
  std::shared_ptr<MemoryDocuments> documents = std::make_shared<MemoryDocuments>();
  std::shared_ptr<FakeIdentity> identity = std::make_shared<FakeIdentity>();
  std::shared_ptr<FakeEnvironment> environment = std::make_shared<FakeEnvironment>();
  std::shared_ptr<FakeFacts<SystemFacts>> system = std::make_shared<FakeFacts<SystemFacts>>();
  std::shared_ptr<FakeFacts<NetworkFacts>> network = std::make_shared<FakeFacts<NetworkFacts>>();
  std::shared_ptr<FakeFacts<ScreenFacts>> screen = std::make_shared<FakeFacts<ScreenFacts>>();
  std::shared_ptr<FakeFacts<PostureFacts>> posture = std::make_shared<FakeFacts<PostureFacts>>();
  std::shared_ptr<FakePower> power = std::make_shared<FakePower>();
  std::shared_ptr<FakeReachability> reachability = std::make_shared<FakeReachability>();
  std::shared_ptr<FakeAuthorization> authorization = std::make_shared<FakeAuthorization>();
  std::shared_ptr<FakeLocation> location = std::make_shared<FakeLocation>();
  std::shared_ptr<FakeFaceDetection> face = std::make_shared<FakeFaceDetection>();
};

/// Sends debug lines to a list and switches debug mode on, both until its end; one at a time.
class DebugLines {
 public:
  DebugLines();
  ~DebugLines();
  DebugLines(const DebugLines&) = delete;
  DebugLines& operator=(const DebugLines&) = delete;

  std::vector<std::string> lines() const;
  bool contain(std::string_view text) const;
};

}  // namespace quorvance
