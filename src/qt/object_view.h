#pragma once

#include <QPointer>
#include <QQuickItem>
#include <QWidget>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "qt/touched_view.h"

namespace quorvance::qt {

/// The view of a widget or an item. Its kinds differ in the free functions of view_geometry.h
/// alone. Empty once the object is gone, and on another thread than the application's.
template <class Object>
class ObjectView : public TouchedView {
 public:
  ObjectView(Object* object, ViewOptions options) : TouchedView(options), object_(object) {}

  ViewFrame frame() override;
  std::int64_t tag() override;
  void setTag(std::int64_t tag) override;
  std::vector<std::shared_ptr<View>> subviews() override;
  std::string description() override;
  void addGestureRecognizer(std::shared_ptr<QuorvanceGestureRecognizer> recognizer) override;

  QWindow* window() const override;

 protected:
  bool isHitAt(QPointF inWindow) const override;
  GesturePoint placeOf(QPointF inWindow) const override;

 private:
  /// Null when it is gone or not to be looked at on this thread.
  Object* object() const;

  const QPointer<Object> object_;
  /// Read once: looking a property up is dear, and the views are asked with every touch.
  std::int64_t tag_ = 0;
  /// As they were when they were last asked for.
  std::vector<std::shared_ptr<View>> subviews_;
  std::vector<QPointer<Object>> children_;
  bool isWatched_ = false;
};

extern template class ObjectView<QWidget>;
extern template class ObjectView<QQuickItem>;

}  // namespace quorvance::qt
