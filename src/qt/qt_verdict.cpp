#include "quorvance/qt/qt_verdict.h"

#include <QObject>
#include <memory>
#include <optional>
#include <utility>

namespace quorvance::qt {
namespace {

/// The completion to be given to the library. The end of the messenger is the signal: Qt delivers
/// it on the context's thread, or drops it with the context, whichever thread ends the messenger.
VerdictCompletion deliveryTo(QObject* context, VerdictCompletion completion) {
  if (context == nullptr || !completion) return [](const Verdict&) {};
  auto arrived = std::make_shared<std::optional<Verdict>>();
  auto messenger = std::make_shared<QObject>();
  QObject::connect(
      messenger.get(), &QObject::destroyed, context,
      [arrived, waiting = std::move(completion)]() mutable {
        // Destroyed here, on the context's thread.
        const VerdictCompletion called = std::exchange(waiting, nullptr);
        if (*arrived) called(std::move(**arrived));
      },
      Qt::QueuedConnection);
  messenger->moveToThread(nullptr);
  return [arrived, messenger = std::move(messenger)](Verdict verdict) mutable {
    *arrived = std::move(verdict);
    messenger.reset();
  };
}

}  // namespace

void riskForCheckPoint(QuorvanceManager& manager, const CheckPointBase& checkPoint,
                       VerdictOptions options, QObject* context, VerdictCompletion completion) {
  manager.getRiskForCheckPoint(checkPoint, options, deliveryTo(context, std::move(completion)));
}

void riskForCheckPoint(QuorvanceManager& manager, const CheckPointBase& checkPoint,
                       QObject* context, RiskCompletion completion) {
  VerdictCompletion withoutReason;
  if (completion) {
    withoutReason = [called = std::move(completion)](Verdict verdict) {
      called(verdict.risk, std::move(verdict.signedRisk), std::move(verdict.requestID));
    };
  }
  riskForCheckPoint(manager, checkPoint, {}, context, std::move(withoutReason));
}

}  // namespace quorvance::qt
