// The bank's own debug lines as a message over its windows.
#pragma once

#include <QObject>
#include <QString>
#include <QTimer>
#include <memory>
#include <string_view>

namespace qt_bank {

// Writes a line to the library's debug log, marked as the bank's own. Any thread.
void debugLine(const QString& text);

// The newest of the bank's lines, for three seconds. Made and used on the GUI thread; takes over
// the library's log sink for its life. Lines come on a thread of the library and are handed over.
// Lines of the library itself, which hold bodies of requests, are not shown.
class Toasts : public QObject {
  Q_OBJECT
  Q_PROPERTY(QString text READ text NOTIFY changed)

 public:
  Toasts();
  ~Toasts() override;

  // Empty when there is nothing to show.
  QString text() const { return text_; }

 signals:
  void changed();
  // On a thread of the library.
  void came(const QString& text);

 private:
  // Outlives the object: the sink may run until after it was replaced.
  struct Link;

  void show(const QString& text);

  std::shared_ptr<Link> link_;
  QString text_;
  QTimer end_;
};

}  // namespace qt_bank
