#include "apps/risk_server/faults/fault_list.h"

#include <gtest/gtest.h>

#include "apps/risk_server/embedded_files.h"
#include "apps/risk_server/faults/fault_reader.h"
#include "apps/risk_server/sample_bodies.h"

namespace risk_server {
namespace {

constexpr const char* kMapPath = "/qrsk-med/3.0/ActivityMap/";

std::vector<Fault> faultsOf(const std::string& json) {
  static const Contract contract =
      Contract::fromJson(readServerJson(embeddedContract(), "contract.json"));
  return readFaults(sample::parsed(json), contract);
}

// Which faults successive calls of the path get: the first letters of their names.
std::string faultsOn(FaultList& list, int calls, const std::string& path = kMapPath) {
  std::string applied;
  for (int i = 0; i < calls; ++i) {
    const auto fault = list.applyToCall(path);
    applied += fault ? fault->name.substr(0, 1) : ".";
  }
  return applied;
}

TEST(FaultListTest, appliesByTheNumberOfTheCall) {
  const struct {
    const char* faults;
    const char* applied;
  } kCases[] = {
      {R"([{"path": "*", "name": "a", "hang": true, "skip": 1, "times": 2}])", ".aa..."},
      {R"([{"path": "*", "name": "a", "hang": true, "skip": 1, "first": 2}])", ".a...."},
      {R"([{"path": "*", "name": "a", "hang": true, "times": 2},
           {"path": "*", "name": "b", "hang": true, "times": 1}])",
       "aab..."},
      {R"([{"path": "*", "name": "a", "hang": true, "first": 2},
           {"path": "*", "name": "b", "hang": true, "first": 4}])",
       "aabb.."},
      {R"([{"path": "/qrsk-med/3.0/TracingData/", "name": "a", "hang": true},
           {"path": "/qrsk-med/3.0/ActivityMap/", "name": "b", "hang": true, "skip": 5}])",
       ".....b"},
      {R"([{"path": "*", "name": "a", "acceptAndClose": true, "times": 9}])", "......"},
  };
  for (const auto& listed : kCases) {
    FaultList list;
    list.replace(faultsOf(listed.faults));
    EXPECT_EQ(faultsOn(list, 6), listed.applied) << listed.faults;
  }
}

TEST(FaultListTest, countsConnectionsApartFromCalls) {
  FaultList list;
  list.replace(faultsOf(R"([{"path": "*", "acceptAndClose": true, "skip": 1, "times": 1}])"));
  EXPECT_EQ(faultsOn(list, 3), "...");
  EXPECT_FALSE(list.applyToConnection());
  EXPECT_TRUE(list.applyToConnection());
  EXPECT_FALSE(list.applyToConnection());
}

}  // namespace
}  // namespace risk_server
