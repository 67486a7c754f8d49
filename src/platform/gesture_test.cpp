#include "quorvance/platform/gesture.h"

#include <gmock/gmock.h>

#include <limits>

namespace quorvance {
namespace {

TEST(GestureRecognizerTest, FirstTouchOfTheLastEventCountsAndTheLargestSoFarIsKept) {
  QuorvanceGestureRecognizer recognizer(nullptr);
  const auto values = [&] {
    return std::vector{recognizer.force(), recognizer.majorRadius(), recognizer.maxForce(),
                       recognizer.maxMajorRadius()};
  };
  recognizer.touchesBegan({{.force = 0.5, .majorRadius = 9}, {.force = 2, .majorRadius = 20}});
  EXPECT_THAT(values(), testing::ElementsAre(0.5, 9, 0.5, 9));
  recognizer.touchesMoved({{.force = 0.75, .majorRadius = 8}});
  EXPECT_THAT(values(), testing::ElementsAre(0.75, 8, 0.75, 9));
  recognizer.touchesEnded({});
  EXPECT_THAT(values(), testing::ElementsAre(0, 0, 0.75, 9));
  recognizer.setState(GestureState::ended, {3, 4});
  // One number that is none would make the whole screen's rows impossible to send.
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  recognizer.touchesMoved({{.force = kNaN, .majorRadius = 1.0 / 0.0}});
  recognizer.setState(GestureState::changed, {5, kNaN});
  EXPECT_THAT(values(), testing::ElementsAre(0, 0, 0.75, 9));
  EXPECT_EQ(recognizer.state(), GestureState::changed);
  EXPECT_EQ(recognizer.location().x, 3);
}

}  // namespace
}  // namespace quorvance
