#include <quorvance/quorvance.h>

#include <cstdio>
#include <future>

// Prints the verdict on a login; ends with 1 when there is none.
int main(int argc, char** argv) {
  if (argc != 2) return 2;
  quorvance::QuorvanceManager manager;
  manager.setupWithServerUrl(argv[1], "user-17");
  std::promise<quorvance::Risk> verdict;
  manager.getRiskForCheckPoint(quorvance::Login({.userId = "user-17"}),
                               [&](quorvance::Risk risk, const std::string&, const std::string&) {
                                 verdict.set_value(risk);
                               });
  const quorvance::Risk risk = verdict.get_future().get();
  std::printf("%s %s\n", QuorvanceSDKVersionString, risk.stringValue().c_str());
  return risk.riskLevel == quorvance::RiskLevel::undefined ? 1 : 0;
}
