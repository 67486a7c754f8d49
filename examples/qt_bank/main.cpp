// qt_bank: a small bank that shows what an application of Qt's does with the library.
// docs/qt_bank.md

#include <QApplication>
#include <QQuickWindow>
#include <QTemporaryDir>
#include <algorithm>
#include <string_view>

#include "bank_application.h"
#include "bank_options.h"

namespace {

// Where there is no display, a journey is played on windows in memory.
void chooseScreen(int argc, char** argv) {
  const bool isPlayed = std::any_of(argv, argv + argc, [](const char* argument) {
    return std::string_view(argument).starts_with("--script");
  });
  if (!isPlayed || !qEnvironmentVariableIsEmpty("DISPLAY") ||
      !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")) {
    return;
  }
  if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
}

void useOwnLook(QApplication& application) {
  QFont font = QApplication::font();
  font.setFamilies({"Inter", "Noto Sans", "DejaVu Sans Condensed", "DejaVu Sans"});
  font.setPixelSize(15);
  // Hinting rounds each letter to whole pixels: sizes of one scale would differ in width.
  font.setHintingPreference(QFont::PreferNoHinting);
  application.setFont(font);
  application.setStyle("Fusion");
}

}  // namespace

int main(int argc, char** argv) {
  chooseScreen(argc, argv);
  QApplication application(argc, argv);
  // The library takes its host's identifier and version from here.
  QCoreApplication::setOrganizationDomain("tarnfield.example");
  QCoreApplication::setOrganizationName("Tarnfield");
  QCoreApplication::setApplicationName("qt_bank");
  QCoreApplication::setApplicationVersion("1.0.0");
  qt_bank::BankOptions options = qt_bank::readOptions(QCoreApplication::arguments());
  useOwnLook(application);
  // A played journey begins as on a new device.
  const QTemporaryDir ownFolder;
  if (!options.script.isEmpty() && options.dataFolder.isEmpty()) {
    options.dataFolder = ownFolder.path();
  }
  return qt_bank::BankApplication(options).run();
}
