#include "quorvance/qt/qt_view.h"

#include <utility>

#include "qt/application_thread.h"
#include "qt/object_view.h"

namespace quorvance::qt {
namespace {

template <class Object>
std::shared_ptr<View> viewOfObject(Object* object, ViewOptions options) {
  if (object == nullptr) return nullptr;
  return std::make_shared<ObjectView<Object>>(object, options);
}

}  // namespace

std::shared_ptr<View> viewOf(QWidget* widget, ViewOptions options) {
  return viewOfObject(widget, options);
}

std::shared_ptr<View> viewOf(QQuickItem* item, ViewOptions options) {
  return viewOfObject(item, options);
}

}  // namespace quorvance::qt
