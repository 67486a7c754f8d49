#include <QApplication>
#include <QScreen>
#include <thread>

#include "platform/testing/temporary_folder_test_support.h"
#include "test/qt/qt_world_test_support.h"

namespace quorvance::qt {
namespace {

/// The names of the application object, as they were before at its end.
struct Names {
  ~Names() {
    QGuiApplication::setDesktopFileName("");
    QCoreApplication::setOrganizationDomain("");
    QCoreApplication::setApplicationName(name);
    QCoreApplication::setApplicationVersion("");
  }
  const QString name = QCoreApplication::applicationName();
};

LinuxPlatformOptions optionsOver(const TemporaryFolder& folder) {
  LinuxPlatformOptions options;
  options.dataFolder = folder.path();
  return options;
}

TEST(QtPlatformTest, TheHostIsTheApplicationObject) {
  const TemporaryFolder folder;
  const Names names;
  QCoreApplication::setApplicationName("till");
  EXPECT_EQ(makePlatform(optionsOver(folder)).hostApplication.identifier, "till");
  EXPECT_EQ(makePlatform(optionsOver(folder)).hostApplication.shortVersion, std::nullopt);
  QCoreApplication::setOrganizationDomain("pay.bank.example");
  QCoreApplication::setApplicationVersion("4.2");
  EXPECT_EQ(makePlatform(optionsOver(folder)).hostApplication.identifier, "example.bank.pay.till");
  EXPECT_EQ(makePlatform(optionsOver(folder)).hostApplication.shortVersion, "4.2");
  QGuiApplication::setDesktopFileName("com.bank.till");
  EXPECT_EQ(makePlatform(optionsOver(folder)).hostApplication.identifier, "com.bank.till");
  LinuxPlatformOptions own = optionsOver(folder);
  own.hostApplication = {"com.bank.own", "5"};
  own.mainQueue = std::make_shared<ManualExecutor>();
  const Platform platform = makePlatform(own);
  EXPECT_EQ(platform.hostApplication.identifier, "com.bank.own");
  EXPECT_EQ(platform.hostApplication.shortVersion, "5");
  EXPECT_EQ(platform.mainQueue, own.mainQueue);
}

TEST(QtPlatformTest, TheScreenIsThePrimaryOne) {
  const TemporaryFolder folder;
  const Platform platform = makePlatform(optionsOver(folder));
  ScreenFacts facts;
  std::thread([&] { facts = platform.facts.screen->read(); }).join();
  const QScreen& screen = *QGuiApplication::primaryScreen();
  EXPECT_EQ(facts.logicalWidth, screen.size().width());
  EXPECT_EQ(facts.logicalHeight, screen.size().height());
  EXPECT_EQ(facts.nativeWidth, screen.size().width() * screen.devicePixelRatio());
  EXPECT_EQ(platform.facts.screen->origin("nativeWidth"), "QScreen");
}

TEST(QtPlatformTest, ElsewhereItIsTheLinuxPlatform) {
  const TemporaryFolder folder;
  std::thread([&] {
    const Platform platform = makePlatform(optionsOver(folder));
    EXPECT_NE(platform.facts.screen->origin("nativeWidth"), "QScreen");
  }).join();
}

}  // namespace
}  // namespace quorvance::qt
