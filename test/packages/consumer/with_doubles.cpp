#include <quorvance/quorvance.h>
#include <quorvance/testing/test_world.h>

#include <cstdio>

// A host's test: no network, no waiting, and the verdict that it scripts.
int main() {
  quorvance::TestWorld world;
  world.http->answer("GetCheckpointRisk/", quorvance::okReply(R"({"risk": 3, "signedRisk": "s"})"));
  quorvance::QuorvanceManager manager(world.platform());
  manager.setupWithServerUrl("https://bank.example/", "user-17");
  std::string level = "none";
  manager.getRiskForCheckPoint(quorvance::Login({.userId = "user-17"}),
                               [&](quorvance::Risk risk, const std::string&, const std::string&) {
                                 level = risk.stringValue();
                               });
  world.time->run();
  std::printf("doubles %s\n", level.c_str());
  return level == "VERY_HIGH" ? 0 : 1;
}
