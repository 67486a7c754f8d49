// The command line.
#pragma once

#include <QSize>
#include <QString>

namespace qt_bank {

struct BankOptions {
  QString serverUrl = "https://risk.bank.example/";
  // Where the bank keeps the consent and the library its state; empty means the usual folder.
  QString dataFolder;
  QSize size{480, 800};
  bool isInDebugMode = false;
  bool isFullScreen = false;
  // The left button of a mouse counts as a finger, for a desk without a touch panel.
  bool mouseIsFinger = false;
  // The journey that is played by touch events in place of a user; empty when a user is there.
  QString script;
  // Where the played journey leaves pictures of its screens; empty for none.
  QString pictures;
};

// Ends the process on wrong arguments (status 2), and after --help.
BankOptions readOptions(const QStringList& arguments);

}  // namespace qt_bank
