#include "platform/testing/test_world.h"

#include <algorithm>
#include <mutex>

#include "base/debug.h"

namespace quorvance {
namespace {

// A sink is a plain function, so what it fills is static; it is empty between two DebugLines.
std::mutex debugLinesMutex;
std::vector<std::string> debugLinesSeen;

void keepDebugLine(std::string_view line) {
  const std::lock_guard lock(debugLinesMutex);
  debugLinesSeen.emplace_back(line);
}

}  // namespace

TestWorld::TestWorld() {
  system->facts.systemVersion = "12";
  system->facts.systemName = "Testix";
  system->facts.model = "Model-1";
  system->facts.kindModel = "handset";
}

TestWorld::~TestWorld() {
  http->dropAll();
  time->dropAll();
}

Platform TestWorld::platform() const {
  Platform platform;
  platform.clock = time;
  platform.mainQueue = time;
  platform.backgroundQueue = time;
  platform.http = http;
  platform.defaults = store;
  platform.documents = documents;
  platform.hostApplication = {"com.bank.app", "4.2"};
  platform.identity = identity;
  platform.environment = environment;
  platform.facts.system = system;
  platform.facts.network = network;
  platform.facts.screen = screen;
  platform.facts.posture = posture;
  platform.facts.power = power;
  platform.reachability = reachability;
  platform.authorization = authorization;
  platform.location = location;
  platform.faceDetection = face;
  return platform;
}

DebugLines::DebugLines() {
  setDebugSink(&keepDebugLine);
  setIsInDebugMode(true);
}

DebugLines::~DebugLines() {
  setIsInDebugMode(false);
  setDebugSink(nullptr);
  const std::lock_guard lock(debugLinesMutex);
  debugLinesSeen.clear();
}

std::vector<std::string> DebugLines::lines() const {
  const std::lock_guard lock(debugLinesMutex);
  return debugLinesSeen;
}

bool DebugLines::contain(std::string_view text) const {
  const std::vector<std::string> seen = lines();
  return std::any_of(seen.begin(), seen.end(),
                     [&](const std::string& line) { return line.find(text) != std::string::npos; });
}

}  // namespace quorvance
