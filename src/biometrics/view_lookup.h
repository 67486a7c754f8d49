#pragma once

#include <cstdint>
#include <optional>

#include "quorvance/platform/gesture.h"
#include "quorvance/platform/view.h"

namespace quorvance {

// What a listener asks of the host's views: on the host's main thread alone.

/// True from the left and top edge on, up to the right and bottom edge without them.
bool contains(const ViewFrame& frame, GesturePoint point);

/// Gives each direct subview whose tag is 0 the next tag, from 59000 at each call.
void tagSubviews(View& root);

/// The tag of the first direct subview, in order, whose frame contains the point (not of the
/// topmost one), else the root's own; absent when neither contains it. The point is in the root's
/// coordinates and is compared as it stands with the root's frame, which is in the coordinates of
/// its parent: that is intended.
std::optional<std::int64_t> viewIdAt(View& root, GesturePoint point);

}  // namespace quorvance
