#include "privacy_window.h"

#include <quorvance/quorvance.h>

#include <QFile>
#include <QHBoxLayout>
#include <QScrollArea>
#include <QScroller>
#include <QVBoxLayout>
#include <chrono>

#include "risk_client.h"
#include "tick_box.h"
#include "toasts.h"

namespace qt_bank {
namespace {

using namespace std::chrono_literals;

constexpr std::chrono::seconds kRefreshTime{1};
constexpr std::int64_t kPrivacyScreen = 6;
constexpr int kColumnWidth = 560;
constexpr int kMostOfTheWidth = 1000;
constexpr int kGap = 16;
constexpr int kToastTop = 72;

QLabel* text(const QString& words, const char* name) {
  auto* const label = new QLabel(words);
  label->setObjectName(name);
  label->setWordWrap(true);
  label->setTextFormat(Qt::PlainText);
  return label;
}

// A surface with a heading; the caller adds to its layout.
QVBoxLayout* card(const QString& heading) {
  auto* const frame = new QFrame;
  frame->setObjectName("card");
  auto* const column = new QVBoxLayout(frame);
  column->setContentsMargins(kGap, kGap, kGap, kGap);
  column->setSpacing(kGap / 2);
  column->addWidget(text(heading, "heading"));
  return column;
}

QString yesOrNo(bool is) { return is ? "yes" : "not yet"; }

QString timeText(const quorvance::DeliveryStatus::Time& time) {
  const auto since =
      std::chrono::duration_cast<std::chrono::seconds>(std::chrono::system_clock::now() - time);
  return since < 2s ? QString("just now") : QString("%1 s ago").arg(since.count());
}

// How the library stands with its server, a line each.
QString statusText(const quorvance::DeliveryStatus& status) {
  QStringList lines = {"Configuration received: " + yesOrNo(status.isConfigured),
                       "Device number assigned: " + yesOrNo(status.hasDeviceIdentifier),
                       "Session accepted: " + yesOrNo(status.isSessionAccepted),
                       QString("Waiting to be sent: %1").arg(status.pending)};
  if (status.lastSuccess) lines << "Last answer: " + timeText(*status.lastSuccess);
  if (status.lastFailure) {
    const auto reason = quorvance::toString(status.lastFailure->reason);
    lines << "Last failure: " + timeText(status.lastFailure->time) + ", " +
                 QString::fromUtf8(reason.data(), static_cast<qsizetype>(reason.size()));
  }
  return lines.join('\n');
}

}  // namespace

PrivacyWindow::PrivacyWindow(RiskClient& risk, const Toasts& toasts, bool mouseIsFinger)
    : risk_(risk), toasts_(toasts), mouseIsFinger_(mouseIsFinger) {
  setObjectName("privacyWindow");
  setWindowTitle("Tarnfield: privacy");
  setAttribute(Qt::WA_StyledBackground);
  QFile style(":/qt_bank/privacy.qss");
  if (style.open(QFile::ReadOnly)) setStyleSheet(QString::fromUtf8(style.readAll()));
  auto* const whole = new QVBoxLayout(this);
  whole->setContentsMargins(0, 0, 0, 0);
  whole->setSpacing(0);
  whole->addWidget(makeHeader());
  whole->addWidget(makeContent(), 1);
  toast_ = new QLabel(this);
  toast_->setObjectName("toast");
  toast_->setAttribute(Qt::WA_TransparentForMouseEvents);
  toast_->hide();
  connect(&toasts_, &Toasts::changed, this, [this] { placeToast(); });
  refreshing_.setInterval(kRefreshTime);
  connect(&refreshing_, &QTimer::timeout, this, [this] { refresh(); });
}

QWidget* PrivacyWindow::makeContent() {
  auto* const column = new QVBoxLayout;
  column->setContentsMargins(kGap, kGap, kGap, kGap);
  column->setSpacing(kGap);
  for (QWidget* const part : {makeConsent(), makeStored(), makeStatus()}) {
    part->setMaximumWidth(kColumnWidth);
    column->addWidget(part);
  }
  column->addStretch();
  auto* const middle = new QWidget;
  auto* const row = new QHBoxLayout(middle);
  row->setContentsMargins(0, 0, 0, 0);
  // What the column may not take is left on both sides.
  row->addStretch(1);
  row->addLayout(column, kMostOfTheWidth);
  row->addStretch(1);
  auto* const scroll = new QScrollArea;
  scroll->setWidget(middle);
  scroll->setWidgetResizable(true);
  scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  QScroller::grabGesture(scroll->viewport(), QScroller::TouchGesture);
  return scroll;
}

QWidget* PrivacyWindow::makeHeader() {
  auto* const header = new QFrame;
  header->setObjectName("header");
  auto* const row = new QHBoxLayout(header);
  row->setContentsMargins(kGap, 0, kGap / 2, 0);
  row->addWidget(text("Privacy", "title"), 1);
  auto* const close = new QPushButton("Close");
  close->setObjectName("close");
  connect(close, &QPushButton::clicked, this, &QWidget::hide);
  row->addWidget(close);
  return header;
}

QWidget* PrivacyWindow::makeConsent() {
  QVBoxLayout* const column = card("Security checks");
  column->addWidget(
      text("With them we can tell you from somebody who only has your PIN. Without "
           "them nothing about you or this device is collected, and larger "
           "transfers must be made in a branch.",
           "words"));
  consent_ = new TickBox("I agree to the checks");
  consent_->setObjectName("consent");
  connect(consent_, &QCheckBox::clicked, this, [this](bool isGiven) {
    emit consentWanted(isGiven);
    refresh();
  });
  column->addWidget(consent_);
  return column->parentWidget();
}

QWidget* PrivacyWindow::makeStored() {
  QVBoxLayout* const column = card("What is stored on this device");
  column->addWidget(
      text("A number for the device, your user number, and reports that wait for "
           "the network.",
           "words"));
  auto* const row = new QHBoxLayout;
  erase_ = new QPushButton("Erase it");
  erase_->setObjectName("erase");
  connect(erase_, &QPushButton::clicked, this, [this] { erase(); });
  row->addWidget(erase_);
  erased_ = text({}, "erased");
  row->addWidget(erased_, 1);
  column->addLayout(row);
  return column->parentWidget();
}

QWidget* PrivacyWindow::makeStatus() {
  QVBoxLayout* const column = card("How the checks are doing");
  status_ = text({}, "status");
  column->addWidget(status_);
  return column->parentWidget();
}

void PrivacyWindow::open(const QWindow& bank) {
  setGeometry(bank.geometry());
  erased_->clear();
  refresh();
  bank.visibility() == QWindow::FullScreen ? showFullScreen() : show();
  raise();
  activateWindow();
  setFocus();
}

void PrivacyWindow::showEvent(QShowEvent* event) {
  refreshing_.start();
  screen_ = quorvance::qt::Screen(quorvance::QuorvanceManager::shared(),
                                  quorvance::ScreenListenerType::GENERAL_FORM, kPrivacyScreen, this,
                                  {.mouseIsFinger = mouseIsFinger_});
  QWidget::showEvent(event);
}

void PrivacyWindow::hideEvent(QHideEvent* event) {
  refreshing_.stop();
  screen_.finish();
  QWidget::hideEvent(event);
}

void PrivacyWindow::resizeEvent(QResizeEvent* event) {
  placeToast();
  QWidget::resizeEvent(event);
}

void PrivacyWindow::erase() {
  erase_->setEnabled(false);
  erased_->setText("Erasing …");
  risk_.erase(this, [this](bool isAllGone) {
    erase_->setEnabled(true);
    erased_->setText(isAllGone ? "Nothing is left." : "Not everything could be erased.");
    refresh();
  });
}

void PrivacyWindow::refresh() {
  consent_->setChecked(risk_.hasConsent());
  status_->setText(statusText(risk_.status()));
}

void PrivacyWindow::placeToast() {
  toast_->setText(toasts_.text());
  toast_->setVisible(!toasts_.text().isEmpty());
  toast_->adjustSize();
  toast_->move((width() - toast_->width()) / 2, kToastTop);
}

}  // namespace qt_bank
