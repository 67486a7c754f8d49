// Plays a recorded screen through the library, as the host's toolkit and sensors would.
#pragma once

#include <chrono>
#include <memory>

#include "apps/demo_host/recorded_screen.h"
#include "apps/demo_host/replay_platform.h"
#include "quorvance/quorvance_manager.h"

namespace demo_host {

// How long the configuration that switches biometrics on is waited for.
inline constexpr std::chrono::seconds kBiometricsTime{10};

// Between two looks at what the library has no signal for.
inline constexpr std::chrono::milliseconds kLookAgainAfter{20};

enum class ReplayPace {
  // With the recording's intervals.
  real,
  // Without waiting; the clock tells the recorded times all the same.
  fast,
};

// What the host's platform has in place of a toolkit, sensors and a clock.
struct ReplayPlatform {
  std::shared_ptr<ReplayMotion> motion;
  std::shared_ptr<ReplayClock> clock;
  ReplayPace pace = ReplayPace::real;
};

class ScreenPlayer {
 public:
  ScreenPlayer(quorvance::QuorvanceManager& manager, ReplayPlatform platform);

  // Opens the screen, replays it and finishes it. Throws RunError.
  void play(quorvance::ScreenListenerType type, std::int64_t id, const RecordedScreen& screen);

 private:
  std::shared_ptr<quorvance::QuorvanceScreenListener> open(quorvance::ScreenListenerType type,
                                                           std::int64_t id,
                                                           const RecordedScreen& screen);
  void replay(const std::vector<RecordedRow>& rows);
  void replay(const RecordedRow& row);

  quorvance::QuorvanceManager& manager_;
  const ReplayPlatform platform_;
  std::shared_ptr<ReplayView> view_;
};

}  // namespace demo_host
