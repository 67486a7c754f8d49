#include "journey_stage.h"

#include <quorvance/quorvance.h>

#include <QLabel>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>
#include <cstdio>

#include "privacy_window.h"
#include "toasts.h"

namespace qt_bank {
namespace {

constexpr int kMostWaitMs = 30'000;
// Of a PNG file: the quality says how little it is compressed.
constexpr int kSmallest = 0;

[[noreturn]] void fail(const QString& reason) { throw JourneyFault(reason.toStdString()); }

void expectSame(const QString& what, const QString& got, const QString& expected) {
  if (got != expected) fail(what + ": expected \"" + expected + "\", got \"" + got + "\"");
}

QString reasonWord(quorvance::VerdictReason reason) {
  const std::string_view word = quorvance::toString(reason);
  return QString::fromUtf8(word.data(), static_cast<qsizetype>(word.size()));
}

}  // namespace

JourneyStage::JourneyStage(Bank& bank, QQuickWindow& window, PrivacyWindow& privacy, Toasts& toasts,
                           const QString& pictures)
    : bank_(bank), window_(window), privacy_(privacy), pictures_(pictures) {
  QObject::connect(
      &bank_, &Bank::decided, &finger_,
      [this](const QString& checkPoint, const quorvance::Verdict& verdict, Decision decision) {
        decided_.append({checkPoint, verdict, decision});
        print(decided_.back());
      });
  QObject::connect(&toasts, &Toasts::changed, &finger_, [this, &toasts] {
    if (!toasts.text().isEmpty()) shownToasts_ << toasts.text();
  });
  waitFor("the window", [this] { return window_.isExposed(); });
}

void JourneyStage::step(const QString& text) {
  std::printf("%s\n", qPrintable(text));
  std::fflush(stdout);
}

void JourneyStage::print(const Decided& decided) const {
  const quorvance::Verdict& verdict = decided.verdict;
  std::printf("    verdict  %-9s  %-13s  %4lld ms  %s: %s\n", verdict.risk.stringValue().c_str(),
              qPrintable(reasonWord(verdict.reason)),
              static_cast<long long>(verdict.elapsed.count()), qPrintable(decided.checkPoint),
              qPrintable(decisionText(decided.decision)));
  std::fflush(stdout);
}

void JourneyStage::tap(const QString& name) {
  if (!finger_.tap(window_, name)) fail("there is no \"" + name + "\" to touch");
}

void JourneyStage::type(const QString& digits) {
  for (const QChar digit : digits) tap(QString("key") + digit);
}

void JourneyStage::drag(QPoint from, QPoint to) { finger_.drag(window_, from, to); }

void JourneyStage::typeKeys(const QString& keys) {
  window_.requestActivate();
  waitFor("the keyboard", [this] { return window_.isActive(); });
  for (const QChar key : keys) {
    key == u'\n' ? QTest::keyClick(&window_, Qt::Key_Return)
                 : QTest::keyClick(&window_, key.toLatin1());
  }
}

QQuickItem& JourneyStage::item(const QString& name) {
  QQuickItem* const found = findVisible(window_, name);
  if (found == nullptr) fail("there is no \"" + name + "\" to look at");
  return *found;
}

void JourneyStage::tapPrivacy(const QString& name) {
  waitFor("the privacy window", [this] {
    return privacy_.windowHandle() != nullptr && privacy_.windowHandle()->isExposed();
  });
  if (!finger_.tap(privacy_, name)) fail("there is no \"" + name + "\" to touch");
}

void JourneyStage::waitFor(const QString& what, const std::function<bool()>& isSo) {
  if (!QTest::qWaitFor(isSo, kMostWaitMs)) fail(what + " did not come in time");
}

void JourneyStage::expectPage(Bank::Page page) {
  const QString name = QVariant::fromValue(page).toString();
  waitFor(name, [&] { return bank_.page() == page && !bank_.isBusy(); });
  // What QML makes of it must be there, too.
  waitFor(name + " on the screen", [&] {
    const QQuickItem& loader = item("page");
    return loader.property("source").toString().endsWith(name + ".qml") &&
           loader.property("item").value<QObject*>() != nullptr;
  });
}

void JourneyStage::expectDecision(Decision decision, quorvance::VerdictReason reason) {
  waitFor("a verdict", [this] { return !decided_.isEmpty(); });
  const Decided decided = decided_.takeFirst();
  expectSame(decided.checkPoint, decisionText(decided.decision), decisionText(decision));
  expectSame(decided.checkPoint + ", reason", reasonWord(decided.verdict.reason),
             reasonWord(reason));
}

void JourneyStage::expectText(const QString& name, const QString& text) {
  expectSame(name, item(name).property("text").toString(), text);
}

void JourneyStage::expectPrivacyText(const QString& name, const QString& part) {
  const auto* const label = privacy_.findChild<QLabel*>(name);
  waitFor("\"" + part + "\"", [&] { return label != nullptr && label->text().contains(part); });
}

void JourneyStage::resize(QSize size) {
  window_.resize(size);
  waitFor("another size", [&] { return window_.contentItem()->size().toSize() == size; });
}

void JourneyStage::picture(const QString& name) {
  if (pictures_.isEmpty()) return;
  const QImage image = privacy_.isVisible() ? privacy_.grab().toImage() : window_.grabWindow();
  const QString file = pictures_ + "/qt_bank_" + name + ".png";
  if (image.isNull() || !image.convertToFormat(QImage::Format_RGB32).save(file, "PNG", kSmallest)) {
    fail("the picture " + file + " could not be made");
  }
}

}  // namespace qt_bank
