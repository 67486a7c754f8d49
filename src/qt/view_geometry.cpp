#include "qt/view_geometry.h"

#include <QQuickItem>
#include <QQuickWindow>
#include <QWidget>
#include <algorithm>

namespace quorvance::qt {
namespace {

/// Pointer handlers have no public class; they are children of their item. One that hovers takes
/// nothing.
bool hasHandlers(const QQuickItem& item) {
  return std::ranges::any_of(item.children(), [](const QObject* child) {
    return child->inherits("QQuickPointerHandler") && !child->inherits("QQuickHoverHandler");
  });
}

/// Whether Qt Quick offers it touches. The layer over a window in which popups lie lets them pass:
/// what a modal one covers is covered by an item of its own.
bool takesTouches(const QQuickItem& item) {
  if (!item.isEnabled()) return false;
  const bool accepts =
      item.acceptTouchEvents() || item.acceptedMouseButtons() != Qt::NoButton || hasHandlers(item);
  return accepts && !item.inherits("QQuickOverlay");
}

enum class Find { nothing, theItem, another };

/// What a touch at the place of the scene meets first, from the top: the item or what is in it, or
/// another one that takes touches.
Find findAt(const QQuickItem& at, const QQuickItem& item, QPointF inScene, bool isInItem) {
  if (!at.isVisible()) return Find::nothing;
  const bool isHit = at.contains(at.mapFromScene(inScene));
  if (at.clip() && !isHit) return Find::nothing;
  isInItem = isInItem || &at == &item;
  const auto findHere = [&] {
    if (!isHit) return Find::nothing;
    if (isInItem) return Find::theItem;
    return takesTouches(at) ? Find::another : Find::nothing;
  };
  bool isBelow = false;  // the item itself lies above its children of negative z
  const auto children = childrenOf(at);
  for (auto child = children.rbegin(); child != children.rend(); ++child) {
    if (!isBelow && (*child)->z() < 0) {
      isBelow = true;
      if (const Find found = findHere(); found != Find::nothing) return found;
    }
    if (const Find found = findAt(**child, item, inScene, isInItem); found != Find::nothing) {
      return found;
    }
  }
  return isBelow ? Find::nothing : findHere();
}

}  // namespace

QRectF frameOf(const QWidget& widget) {
  return widget.isWindow() ? QRectF(widget.rect()) : QRectF(widget.geometry());
}

QRectF frameOf(const QQuickItem& item) {
  const QRectF own(0, 0, item.width(), item.height());
  if (item.parentItem() == nullptr) return own;
  if (item.scale() == 1 && item.rotation() == 0) return own.translated(item.position());
  return item.mapRectToItem(item.parentItem(), own);
}

std::vector<QWidget*> childrenOf(const QWidget& widget) {
  std::vector<QWidget*> found;
  for (QObject* const child : widget.children()) {
    if (!child->isWidgetType()) continue;
    auto* const inner = static_cast<QWidget*>(child);
    if (!inner->isWindow()) found.push_back(inner);
  }
  return found;
}

std::vector<QQuickItem*> childrenOf(const QQuickItem& item) {
  const QList<QQuickItem*> declared = item.childItems();
  std::vector<QQuickItem*> found(declared.begin(), declared.end());
  const auto isLower = [](const QQuickItem* one, const QQuickItem* other) {
    return one->z() < other->z();
  };
  const auto isMoved = [](const QQuickItem* one) { return one->z() != 0; };
  if (std::ranges::any_of(found, isMoved)) std::ranges::stable_sort(found, isLower);
  return found;
}

QWindow* windowOf(const QWidget& widget) { return widget.window()->windowHandle(); }

QWindow* windowOf(const QQuickItem& item) { return item.window(); }

bool isUnder(const QWidget& widget, QPointF inWindow) {
  QWidget* const window = widget.window();
  const QPoint place = inWindow.toPoint();
  const QWidget* const hit = window->childAt(place);
  if (hit == nullptr) return &widget == window && window->rect().contains(place);
  return hit == &widget || widget.isAncestorOf(hit);
}

bool isUnder(const QQuickItem& item, QPointF inWindow) {
  const QQuickWindow* const window = item.window();
  if (window == nullptr) return false;
  return findAt(*window->contentItem(), item, inWindow, false) == Find::theItem;
}

QPointF mappedTo(const QWidget& widget, QPointF inWindow) {
  return widget.mapFrom(widget.window(), inWindow);
}

QPointF mappedTo(const QQuickItem& item, QPointF inWindow) { return item.mapFromScene(inWindow); }

}  // namespace quorvance::qt
