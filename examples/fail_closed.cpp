// Fail closed: without a verdict the money stays. The application passes the signed verdict on; the
// bank's server is who decides, by the signature, since an application can be tampered with.

#include <quorvance/quorvance.h>

#include <chrono>
#include <iostream>

using namespace quorvance;
using namespace std::chrono_literals;

int main(int argc, char** argv) {
  auto manager = QuorvanceManager::shared();
  manager->setupWithServerUrl(argc > 1 ? argv[1] : "https://risk.bank.example/", "user-17");
  manager->initializeDeviceId();

  const Transaction transfer({.actType = TransactionType::MONEY_TRANSFER,
                              .curType = CurrencyCode::EUR,
                              .destinationId = "DE02120300000000202051",
                              .amount = 250});
  const Verdict verdict = manager->riskForCheckPoint(transfer, {.deadline = 5s}).get();
  const RiskLevel level = verdict.risk.riskLevel;
  const bool isAllowed = level == RiskLevel::low || level == RiskLevel::medium;
  std::cout << (isAllowed ? "Send the transfer with " + verdict.signedRisk : "Hold the transfer.")
            << '\n';
  // The outcome goes under the identifier of the verdict, so that the server learns from it.
  if (!verdict.requestID.empty()) {
    manager->updateCheckPointStatus(
        CheckPointType::TRANSACTION, verdict.requestID,
        isAllowed ? CheckPointStatus::APPROVED : CheckPointStatus::DENIED, "transfer-4711");
  }
  manager->flush(2s);  // the outcome is not lost at the end
}
