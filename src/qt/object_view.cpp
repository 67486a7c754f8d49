#include "qt/object_view.h"

#include <QVariant>
#include <algorithm>
#include <utility>

#include "qt/application_thread.h"
#include "qt/touch_router.h"
#include "qt/view_geometry.h"

namespace quorvance::qt {

template <class Object>
Object* ObjectView<Object>::object() const {
  return isOnApplicationThread() ? object_.data() : nullptr;
}

template <class Object>
ViewFrame ObjectView<Object>::frame() {
  const Object* const shown = object();
  if (shown == nullptr) return {};
  const QRectF rectangle = frameOf(*shown);
  return {rectangle.x(), rectangle.y(), rectangle.width(), rectangle.height()};
}

template <class Object>
std::int64_t ObjectView<Object>::tag() {
  const Object* const shown = object();
  if (shown == nullptr) return 0;
  if (tag_ == 0) tag_ = shown->property(kTagProperty).toLongLong();
  return tag_;
}

template <class Object>
void ObjectView<Object>::setTag(std::int64_t tag) {
  Object* const shown = object();
  if (shown == nullptr) return;
  tag_ = tag;
  shown->setProperty(kTagProperty, QVariant::fromValue<qlonglong>(tag));
}

template <class Object>
std::vector<std::shared_ptr<View>> ObjectView<Object>::subviews() {
  const Object* const shown = object();
  if (shown == nullptr) return {};
  const std::vector<Object*> children = childrenOf(*shown);
  if (!std::equal(children.begin(), children.end(), children_.begin(), children_.end())) {
    std::vector<std::shared_ptr<View>> made;
    made.reserve(children.size());
    for (Object* const child : children) {
      made.push_back(std::make_shared<ObjectView<Object>>(child, ViewOptions()));
    }
    subviews_ = std::move(made);
    children_.assign(children.begin(), children.end());
  }
  return subviews_;
}

template <class Object>
std::string ObjectView<Object>::description() {
  const Object* const shown = object();
  if (shown == nullptr) return "gone";
  const QString name = shown->objectName();
  return shown->metaObject()->className() + (name.isEmpty() ? "" : " " + name.toStdString());
}

template <class Object>
void ObjectView<Object>::addGestureRecognizer(
    std::shared_ptr<QuorvanceGestureRecognizer> recognizer) {
  Object* const shown = object();
  if (shown == nullptr) return;
  addRecognizer(std::move(recognizer));
  if (std::exchange(isWatched_, true)) return;
  const auto self = shared_from_this();
  TouchRouter::watch(self);
  QObject::connect(shown, &QObject::destroyed, shown, [weak = std::weak_ptr(self)] {
    if (const auto alive = weak.lock()) alive->cancel();
  });
}

template <class Object>
QWindow* ObjectView<Object>::window() const {
  const Object* const shown = object();
  return shown == nullptr ? nullptr : windowOf(*shown);
}

template <class Object>
bool ObjectView<Object>::isHitAt(QPointF inWindow) const {
  const Object* const shown = object();
  return shown != nullptr && isUnder(*shown, inWindow);
}

template <class Object>
GesturePoint ObjectView<Object>::placeOf(QPointF inWindow) const {
  const Object* const shown = object();
  if (shown == nullptr) return {};
  const QPointF place = mappedTo(*shown, inWindow);
  return {place.x(), place.y()};
}

template class ObjectView<QWidget>;
template class ObjectView<QQuickItem>;

}  // namespace quorvance::qt
