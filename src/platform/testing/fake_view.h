#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/testing/fake_motion.h"
#include "quorvance/platform/gesture.h"
#include "quorvance/platform/view.h"

namespace quorvance {

/// A view that a test lays out and touches.
class FakeView : public View {
 public:
  explicit FakeView(ViewFrame frame, std::int64_t tag = 0) : frame_(frame), tag_(tag) {}

  std::vector<std::shared_ptr<View>> children;
  /// What was added, in order.
  std::vector<std::shared_ptr<QuorvanceGestureRecognizer>> recognizers;
  /// Filled, when set, with "look", "tag 59000", "add recognizer".
  std::shared_ptr<CallList> calls;

  ViewFrame frame() override { return frame_; }
  std::int64_t tag() override { return tag_; }
  void setTag(std::int64_t tag) override {
    note("tag " + std::to_string(tag));
    tag_ = tag;
  }
  std::vector<std::shared_ptr<View>> subviews() override {
    note("look");
    return children;
  }
  std::string description() override { return "view " + std::to_string(tag_); }
  void addGestureRecognizer(std::shared_ptr<QuorvanceGestureRecognizer> recognizer) override {
    note("add recognizer");
    recognizers.push_back(std::move(recognizer));
  }

  std::shared_ptr<FakeView> add(ViewFrame frame, std::int64_t tag = 0) {
    auto child = std::make_shared<FakeView>(frame, tag);
    child->calls = calls;
    children.push_back(child);
    return child;
  }

  /// One event of a toolkit: a finger of force 0.5 and radius 8, for every recognizer.
  void touch(GestureState state, GesturePoint place) const {
    for (const auto& recognizer : recognizers) {
      recognizer->touchesMoved({{.force = 0.5, .majorRadius = 8}});
      recognizer->setState(state, place);
    }
  }

 private:
  void note(std::string call) const {
    if (calls) calls->push_back(std::move(call));
  }

  ViewFrame frame_;
  std::int64_t tag_;
};

}  // namespace quorvance
