#include "biometrics/view_lookup.h"

#include <gtest/gtest.h>

#include "platform/testing/fake_view.h"

namespace quorvance {
namespace {

TEST(ViewLookupTest, FirstSubviewInOrderThenTheRootByItsFrameInItsParent) {
  // The root stands at (10, 100) of its parent; the second subview lies on top of the first.
  FakeView root({10, 100, 200, 50}, 1);
  root.children.push_back(nullptr);  // a view that its toolkit has just lost
  root.add({20, 0, 30, 40}, 2);
  root.add({20, 0, 100, 40}, 3);
  root.add({0, 200, 0, 10}, 4);
  const struct {
    GesturePoint place;
    std::optional<std::int64_t> tag;
  } kCases[] = {
      {{20, 0}, 2},  // left and top edge belong to the frame
      {{49.999, 39.999}, 2},
      {{50, 39.999}, 3},         // right edge does not
      {{20, 40}, std::nullopt},  // nor does the bottom one
      {{120, 0}, std::nullopt},
      {{19.999, 0}, std::nullopt},
      {{10, 100}, 1},  // as it stands: no conversion to the parent's coordinates
      {{209.999, 149.999}, 1},
      {{210, 120}, std::nullopt},
      {{9.999, 120}, std::nullopt},
      {{30, 45}, std::nullopt},  // within the root, but not by that comparison
      {{0, 205}, std::nullopt},  // a frame without width contains nothing
  };
  for (const auto& one : kCases) {
    EXPECT_EQ(viewIdAt(root, one.place), one.tag) << one.place.x << ", " << one.place.y;
  }
  tagSubviews(root);
}

}  // namespace
}  // namespace quorvance
