#include "apps/demo_host/screen_player.h"

#include <thread>
#include <utility>

#include "apps/demo_host/demo_errors.h"

namespace demo_host {
namespace {

using SteadyClock = std::chrono::steady_clock;

}  // namespace

ScreenPlayer::ScreenPlayer(quorvance::QuorvanceManager& manager, ReplayPlatform platform)
    : manager_(manager), platform_(std::move(platform)) {}

void ScreenPlayer::play(quorvance::ScreenListenerType type, std::int64_t id,
                        const RecordedScreen& screen) {
  const auto listener = open(type, id, screen);
  replay(screen.rows);
  listener->finishScreenListener();
  // Finishing is work of the queue on which samples are delivered.
  const bool isFinished = platform_.motion->waitUntilTaken();
  platform_.clock->goOn();
  if (!isFinished) throw RunError("the library's main queue stands still");
}

// A listener reads the configuration when it is made. Until the server's has come, one captures
// nothing and sends nothing, and the library has no signal for it: so another one is made.
std::shared_ptr<quorvance::QuorvanceScreenListener> ScreenPlayer::open(
    quorvance::ScreenListenerType type, std::int64_t id, const RecordedScreen& screen) {
  const auto deadline = SteadyClock::now() + kBiometricsTime;
  for (;;) {
    view_ = std::make_shared<ReplayView>(screen.view);
    auto listener = manager_.startNewScreenListener(type, id, view_);
    if (view_->isWatched() || screen.touches() == 0) return listener;
    if (SteadyClock::now() >= deadline) {
      throw RunError("the configuration does not switch biometrics on");
    }
    std::this_thread::sleep_for(kLookAgainAfter);
  }
}

void ScreenPlayer::replay(const std::vector<RecordedRow>& rows) {
  const auto start = SteadyClock::now();
  const std::int64_t startTime = platform_.clock->nowMilliseconds();
  for (const RecordedRow& row : rows) {
    if (platform_.pace == ReplayPace::fast) {
      platform_.clock->stopAt(startTime + row.time.count());
    } else {
      std::this_thread::sleep_until(start + row.time);
    }
    replay(row);
  }
}

// The clock may only tell the next time once this sample has been stamped.
void ScreenPlayer::replay(const RecordedRow& row) {
  if (const auto* touch = std::get_if<RecordedTouch>(&row.what)) {
    view_->touch(*touch);
    return;
  }
  platform_.motion->deliver(std::get<RecordedMotion>(row.what));
  if (platform_.pace == ReplayPace::fast && !platform_.motion->waitUntilTaken()) {
    throw RunError("the library's main queue stands still");
  }
}

}  // namespace demo_host
