// Fail closed: without a verdict the money stays. The application passes the signed verdict on; the
// bank's server is who decides, by the signature, since an application can be tampered with.

#include <quorvance/quorvance.h>

#include <chrono>
#include <future>
#include <iostream>
#include <memory>

using namespace quorvance;

namespace {

constexpr std::chrono::seconds kPatience{5};

struct Answer {
  RiskLevel level = RiskLevel::undefined;
  std::string signedRisk = "-1";
  std::string requestID;
};

// Undefined too when no verdict has come in time: the completion may then still run, so it owns
// what it writes to.
Answer answerFor(QuorvanceManager& manager, const CheckPoint& checkPoint) {
  auto answer = std::make_shared<std::promise<Answer>>();
  manager.getRiskForCheckPoint(
      checkPoint, [answer](Risk risk, std::string signedRisk, std::string requestID) {
        answer->set_value({risk.riskLevel, std::move(signedRisk), std::move(requestID)});
      });
  auto coming = answer->get_future();
  if (coming.wait_for(kPatience) != std::future_status::ready) return {};
  return coming.get();
}

}  // namespace

int main(int argc, char** argv) {
  auto manager = QuorvanceManager::shared();
  manager->setupWithServerUrl(argc > 1 ? argv[1] : "https://risk.bank.example/", "user-17");
  manager->initializeDeviceId();

  const Transaction transfer({.actType = TransactionType::MONEY_TRANSFER,
                              .curType = CurrencyCode::EUR,
                              .destinationId = "DE02120300000000202051",
                              .amount = 250});
  const Answer answer = answerFor(*manager, transfer);
  const bool isAllowed = answer.level == RiskLevel::low || answer.level == RiskLevel::medium;
  std::cout << (isAllowed ? "Send the transfer with " + answer.signedRisk : "Hold the transfer.")
            << '\n';
  // The outcome goes under the identifier of the verdict, so that the server learns from it.
  if (!answer.requestID.empty()) {
    manager->updateCheckPointStatus(
        CheckPointType::TRANSACTION, answer.requestID,
        isAllowed ? CheckPointStatus::APPROVED : CheckPointStatus::DENIED, "transfer-4711");
  }
}
