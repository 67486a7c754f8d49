#include "qt/risk_screen.h"

#include <QQmlInfo>
#include <QQuickWindow>
#include <cmath>
#include <cstdint>
#include <optional>
#include <utility>

#include "quorvance/qt/qml_types.h"
#include "quorvance/quorvance_manager.h"

namespace quorvance::qt {
namespace {

/// Absent: the shared one.
std::optional<std::weak_ptr<QuorvanceManager>>& chosenManager() {
  static std::optional<std::weak_ptr<QuorvanceManager>> manager;
  return manager;
}

std::shared_ptr<QuorvanceManager> managerOfScreens() {
  return chosenManager() ? chosenManager()->lock() : QuorvanceManager::shared();
}

/// Of those that a number of QML tells apart.
bool isWholeNumber(double value) {
  constexpr double kLast = 9007199254740992;
  return std::abs(value) <= kLast && std::trunc(value) == value;
}

}  // namespace

void registerQmlTypes(const std::shared_ptr<QuorvanceManager>& manager) {
  RiskScreen::useManager(manager);
  qmlRegisterType<RiskScreen>("Quorvance", 1, 0, "RiskScreen");
}

RiskScreen::RiskScreen(QObject* parent) : QObject(parent) {
  connect(this, &RiskScreen::settingsChanged, this, &RiskScreen::restart);
}

void RiskScreen::useManager(const std::shared_ptr<QuorvanceManager>& manager) {
  chosenManager().reset();
  if (manager) chosenManager() = manager;
}

QQuickItem* RiskScreen::view() const {
  if (isViewChosen_) return chosen_;
  if (const auto* const window = qobject_cast<QQuickWindow*>(parent()))
    return window->contentItem();
  return qobject_cast<QQuickItem*>(parent());
}

void RiskScreen::setView(QQuickItem* view) {
  if (isViewChosen_ && chosen_ == view) return;
  chosen_ = view;
  isViewChosen_ = true;
  Q_EMIT settingsChanged();
}

void RiskScreen::resetView() {
  if (!std::exchange(isViewChosen_, false)) return;
  Q_EMIT settingsChanged();
}

void RiskScreen::componentComplete() {
  isComplete_ = true;
  update();
}

void RiskScreen::restart() {
  const bool wasWatching = isWatching();
  screen_.finish();
  updateFrom(wasWatching);
}

void RiskScreen::update() { updateFrom(isWatching()); }

void RiskScreen::updateFrom(bool wasWatching) {
  if (!isComplete_) return;
  QQuickItem* const item = view();
  if (item != followed_) follow(item);
  const bool shallWatch = isActive_ && item != nullptr && item->isVisible() && !isWindowHidden_;
  if (!shallWatch) {
    screen_.finish();
  } else if (!isWatching()) {
    screen_ = begin(item);
  }
  if (wasWatching != isWatching()) Q_EMIT watchingChanged();
}

void RiskScreen::follow(QQuickItem* item) {
  if (followed_) followed_->disconnect(this);
  followed_ = item;
  if (item == nullptr) return;
  connect(item, &QQuickItem::visibleChanged, this, &RiskScreen::update);
  connect(item, &QObject::destroyed, this, &RiskScreen::restart);
  connect(item, &QQuickItem::windowChanged, this, [this](QQuickWindow* window) {
    followWindow(window);
    update();
  });
  followWindow(item->window());
}

void RiskScreen::followWindow(QQuickWindow* window) {
  if (window == nullptr || window == window_) return;
  if (window_) window_->disconnect(this);
  window_ = window;
  isWindowHidden_ = false;
  connect(window, &QWindow::visibleChanged, this, [this](bool isVisible) {
    isWindowHidden_ = !isVisible;
    update();
  });
}

Screen RiskScreen::begin(QQuickItem* item) {
  const auto type = ScreenListenerTypeToString::fromNillableString(type_.toStdString());
  if (!type) {
    qmlWarning(this) << "there is no type of screen \"" << type_ << '"';
    return {};
  }
  if (!isWholeNumber(actionId_)) {
    qmlWarning(this) << "the actionId " << actionId_ << " is no whole number up to 2^53";
    return {};
  }
  return Screen(managerOfScreens(), *type, static_cast<std::int64_t>(actionId_), item,
                {.mouseIsFinger = isMouseFinger_});
}

}  // namespace quorvance::qt
