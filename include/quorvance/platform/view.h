#pragma once

#include "quorvance/standard_library.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#pragma GCC visibility push(default)

namespace quorvance {

/// In points, in the coordinates of the parent.
struct ViewFrame {
  double x = 0;
  double y = 0;
  double width = 0;
  double height = 0;
};

class QuorvanceGestureRecognizer;

/// A view of the host's user interface; touched only inside calls that the host's thread makes.
class View {
 public:
  virtual ~View() = default;
  virtual ViewFrame frame() = 0;
  virtual std::int64_t tag() = 0;
  virtual void setTag(std::int64_t tag) = 0;
  /// Direct subviews, in order; null ones are passed over.
  virtual std::vector<std::shared_ptr<View>> subviews() = 0;
  /// For debug output only.
  virtual std::string description() = 0;
  /// Takes the recognizer, which from then on is to be driven with the touches of this view and of
  /// everything in it (gesture.h). A view without touches leaves it alone.
  virtual void addGestureRecognizer(std::shared_ptr<QuorvanceGestureRecognizer> /*recognizer*/) {}
};

}  // namespace quorvance

#pragma GCC visibility pop
