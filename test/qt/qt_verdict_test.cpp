#include <QObject>
#include <QThread>
#include <atomic>
#include <thread>

#include "test/qt/qt_world_test_support.h"

namespace quorvance::qt {
namespace {

/// The library's work runs on a thread that is not Qt's, as it does in an application.
void runLibrary(QtWorld& world) {
  std::thread([&] { world.time->run(); }).join();
}

/// A verdict of level 2, and the thread that it came to.
struct Received {
  RiskLevel level = RiskLevel::undefined;
  std::string signedRisk;
  QThread* thread = nullptr;
  int count = 0;
};

struct QtVerdictTest : testing::Test {
  QtVerdictTest() {
    world.http->answer("GetCheckpointRisk/", okReply(R"({"risk": 2, "signedRisk": "s"})"));
  }
  void ask(QObject* context) {
    riskForCheckPoint(*world.manager, General(), {}, context, [this](const Verdict& verdict) {
      received = {verdict.risk.riskLevel, verdict.signedRisk, QThread::currentThread(),
                  received.count + 1};
    });
  }

  QtWorld world;
  Received received;
};

TEST_F(QtVerdictTest, ArrivesOnTheContextsThreadInBothForms) {
  QThread thread;
  auto* const there = new QObject;
  there->moveToThread(&thread);
  thread.start();
  ask(there);
  runLibrary(world);
  QMetaObject::invokeMethod(
      there, [there] { delete there; }, Qt::BlockingQueuedConnection);
  EXPECT_EQ(received.thread, &thread);
  EXPECT_EQ(received.level, RiskLevel::high);
  thread.quit();
  thread.wait();

  const QObject here;
  QObject context;
  std::string level;
  riskForCheckPoint(*world.manager, General(), &context,
                    [&](Risk risk, const std::string& signedRisk, const std::string& requestId) {
                      level = risk.stringValue() + signedRisk + (requestId.empty() ? "" : "r");
                    });
  runLibrary(world);
  EXPECT_EQ(level, "") << "never inside the library's threads";
  QCoreApplication::processEvents();
  EXPECT_EQ(level, "HIGHsr");
}

TEST_F(QtVerdictTest, IsDroppedWithItsContextAtWhateverMoment) {
  auto context = std::make_unique<QObject>();
  ask(context.get());
  context.reset();  // under way
  runLibrary(world);
  QCoreApplication::processEvents();
  context = std::make_unique<QObject>();
  ask(context.get());
  runLibrary(world);
  context.reset();  // arrived, not told yet
  QCoreApplication::processEvents();
  ask(nullptr);
  riskForCheckPoint(*world.manager, General(), QCoreApplication::instance(), RiskCompletion());
  runLibrary(world);
  QCoreApplication::processEvents();
  EXPECT_EQ(received.count, 0);
  EXPECT_EQ(world.http->countTo("GetCheckpointRisk/"), 4U) << "each was reported all the same";
}

// A completion may hold what belongs to one thread, as values of QML do.
TEST_F(QtVerdictTest, TheCompletionEndsOnTheContextsThread) {
  struct Held {
    explicit Held(std::vector<QThread*>& ends) : log(ends) {}
    ~Held() { log.push_back(QThread::currentThread()); }
    std::vector<QThread*>& log;
  };
  std::vector<QThread*> ends;
  for (const bool isContextGone : {false, true}) {
    auto context = std::make_unique<QObject>();
    riskForCheckPoint(*world.manager, General(), {}, context.get(),
                      [held = std::make_shared<Held>(ends)](const Verdict&) {});
    if (isContextGone) context.reset();
    runLibrary(world);
    QCoreApplication::processEvents();
  }
  EXPECT_THAT(ends, testing::ElementsAre(QThread::currentThread(), QThread::currentThread()));
}

// Its thread ends each context while another one has the verdict in hand: for the sanitizers, too.
TEST_F(QtVerdictTest, ContextsEndWhileVerdictsArrive) {
  constexpr int kRounds = 300;
  QThread thread;
  thread.start();
  for (int i = 0; i < kRounds; ++i) {
    auto* const context = new QObject;
    context->moveToThread(&thread);
    ask(context);
    context->deleteLater();
    runLibrary(world);
  }
  thread.quit();
  thread.wait();
  EXPECT_LE(received.count, kRounds);
}

}  // namespace
}  // namespace quorvance::qt
