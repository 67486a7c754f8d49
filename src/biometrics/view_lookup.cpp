#include "biometrics/view_lookup.h"

#include "base/debug.h"

namespace quorvance {
namespace {

constexpr std::int64_t kFirstGivenTag = 59000;

}  // namespace

bool contains(const ViewFrame& frame, GesturePoint point) {
  return point.x >= frame.x && point.x < frame.x + frame.width && point.y >= frame.y &&
         point.y < frame.y + frame.height;
}

void tagSubviews(View& root) {
  std::int64_t next = kFirstGivenTag;
  for (const auto& subview : root.subviews()) {
    if (!subview) continue;
    if (isInDebugMode()) debugPrint(subview->description());
    if (subview->tag() == 0) subview->setTag(next++);
  }
}

std::optional<std::int64_t> viewIdAt(View& root, GesturePoint point) {
  for (const auto& subview : root.subviews()) {
    if (subview && contains(subview->frame(), point)) return subview->tag();
  }
  if (contains(root.frame(), point)) return root.tag();
  return std::nullopt;
}

}  // namespace quorvance
