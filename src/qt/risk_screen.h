#pragma once

#include <QObject>
#include <QPointer>
#include <QQmlParserStatus>
#include <QQuickItem>
#include <QQuickWindow>
#include <QString>
#include <memory>

#include "quorvance/qt/qt_screen.h"

namespace quorvance::qt {

/// The QML type of quorvance/qt/qml_types.h, which tells its properties. Begins once QML has
/// completed it, and from then on follows the item's visibility. Application's thread only.
class RiskScreen : public QObject, public QQmlParserStatus {
  Q_OBJECT
  Q_INTERFACES(QQmlParserStatus)
  Q_PROPERTY(QString type MEMBER type_ NOTIFY settingsChanged)
  Q_PROPERTY(double actionId MEMBER actionId_ NOTIFY settingsChanged)
  Q_PROPERTY(QQuickItem* view READ view WRITE setView RESET resetView NOTIFY settingsChanged)
  Q_PROPERTY(bool active MEMBER isActive_ NOTIFY settingsChanged)
  Q_PROPERTY(bool mouseIsFinger MEMBER isMouseFinger_ NOTIFY settingsChanged)
  Q_PROPERTY(bool watching READ isWatching NOTIFY watchingChanged)

 public:
  explicit RiskScreen(QObject* parent = nullptr);

  /// Null stands for the shared one.
  static void useManager(const std::shared_ptr<QuorvanceManager>& manager);

  /// The item that is watched; null where there is none.
  QQuickItem* view() const;
  void setView(QQuickItem* view);
  void resetView();
  bool isWatching() const { return screen_.isWatching(); }

  void classBegin() override {}
  void componentComplete() override;

 Q_SIGNALS:
  void settingsChanged();
  void watchingChanged();

 private:
  /// Ends the screen and begins another one.
  void restart();
  /// Begins or ends as the item's visibility wants it.
  void update();
  /// The same, and tells when that it watches differs from what it was.
  void updateFrom(bool wasWatching);
  void follow(QQuickItem* item);
  /// While the item is in none, the last one's visibility stands.
  void followWindow(QQuickWindow* window);
  Screen begin(QQuickItem* item);

  QString type_;
  /// As QML has numbers.
  double actionId_ = 0;
  QPointer<QQuickItem> chosen_;
  /// By the application, null too: then nothing is watched, and not the parent instead.
  bool isViewChosen_ = false;
  bool isActive_ = true;
  bool isMouseFinger_ = false;
  bool isComplete_ = false;
  QPointer<QQuickItem> followed_;
  QPointer<QQuickWindow> window_;
  /// Hidden after it was shown, which leaves its items visible. One that was never shown counts as
  /// shown: it may be drawn into another one.
  bool isWindowHidden_ = false;
  Screen screen_;
};

}  // namespace quorvance::qt
