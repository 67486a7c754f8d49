#include "toasts.h"

#include <quorvance/quorvance.h>

#include <chrono>
#include <mutex>

namespace qt_bank {
namespace {

constexpr std::chrono::seconds kShownFor{3};
constexpr std::string_view kMark = "bank: ";

}  // namespace

struct Toasts::Link {
  std::mutex mutex;
  // Null once it is gone.
  Toasts* toasts = nullptr;
};

void debugLine(const QString& text) {
  quorvance::QuorvanceManager::log(std::string(kMark) + text.toStdString());
}

Toasts::Toasts() : link_(std::make_shared<Link>()) {
  link_->toasts = this;
  connect(this, &Toasts::came, this, &Toasts::show, Qt::QueuedConnection);
  end_.setSingleShot(true);
  connect(&end_, &QTimer::timeout, this, [this] { show({}); });
  quorvance::setLogSink([link = link_](quorvance::LogLevel /*level*/, std::string_view line) {
    if (!line.starts_with(kMark)) return;
    line.remove_prefix(kMark.size());
    const QString text = QString::fromUtf8(line.data(), static_cast<qsizetype>(line.size()));
    const std::lock_guard lock(link->mutex);
    if (link->toasts != nullptr) emit link->toasts->came(text);
  });
}

Toasts::~Toasts() {
  quorvance::setLogSink(nullptr);
  const std::lock_guard lock(link_->mutex);
  link_->toasts = nullptr;
}

void Toasts::show(const QString& text) {
  text_ = text;
  text.isEmpty() ? end_.stop() : end_.start(kShownFor);
  emit changed();
}

}  // namespace qt_bank
