#include "risk_client.h"

#include <quorvance/qt/qt.h>

#include <QFutureWatcher>
#include <QPromise>
#include <utility>

namespace qt_bank {

using quorvance::QuorvanceManager;

RiskClient::RiskClient(const BankOptions& options, const QString& userId)
    : serverUrl_(options.serverUrl.toStdString()), userId_(userId.toStdString()) {
  quorvance::LinuxPlatformOptions platform;
  if (!options.dataFolder.isEmpty()) platform.dataFolder = options.dataFolder.toStdString();
  // The names of the application, its screen and its event loop come from Qt.
  QuorvanceManager::usePlatform(quorvance::qt::makePlatform(std::move(platform)));
  QuorvanceManager::setIsInDebugMode(options.isInDebugMode);
  // The switch is on by default: it goes off before anything is asked of the library.
  QuorvanceManager::setCollectionEnabled(false);
  manager_ = QuorvanceManager::shared();
  quorvance::qt::registerQmlTypes(manager_);
}

void RiskClient::setConsent(bool isGiven) {
  QuorvanceManager::setCollectionEnabled(isGiven);
  // Without consent this keeps the URL and the user in memory and sends nothing.
  manager_->setupWithServerUrl(serverUrl_, userId_);
  manager_->initializeDeviceId();
  manager_->arriveToCheckPoint(quorvance::Launch());
}

bool RiskClient::hasConsent() const { return QuorvanceManager::isCollectionEnabled(); }

void RiskClient::ask(const quorvance::CheckPoint& checkPoint, std::chrono::milliseconds deadline,
                     QObject* receiver, quorvance::VerdictCompletion completion) {
  quorvance::qt::riskForCheckPoint(*manager_, checkPoint, {.deadline = deadline}, receiver,
                                   std::move(completion));
}

void RiskClient::reportOutcome(quorvance::CheckPointType type, const quorvance::Verdict& verdict,
                               quorvance::CheckPointStatus status, const QString& transactionId) {
  if (verdict.requestID.empty()) return;
  manager_->updateCheckPointStatus(type, verdict.requestID, status, transactionId.toStdString());
}

void RiskClient::signOut() { manager_->logout(); }

void RiskClient::erase(QObject* receiver, std::function<void(bool isAllGone)> completion) {
  // The library calls back on a thread of its own: a watcher of the receiver's takes it from there.
  const auto promise = std::make_shared<QPromise<bool>>();
  auto* const watcher = new QFutureWatcher<bool>(receiver);
  QObject::connect(watcher, &QFutureWatcher<bool>::finished, receiver, [=] {
    completion(watcher->future().resultCount() > 0 && watcher->result());
    watcher->deleteLater();
  });
  watcher->setFuture(promise->future());
  promise->start();
  manager_->eraseStoredData([promise](bool isAllGone) {
    promise->addResult(isAllGone);
    promise->finish();
  });
}

quorvance::DeliveryStatus RiskClient::status() const { return manager_->status(); }

bool RiskClient::flush(std::chrono::milliseconds timeout) { return manager_->flush(timeout); }

}  // namespace qt_bank
