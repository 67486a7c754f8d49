#pragma once

#include <QPointF>
#include <QRectF>
#include <vector>

class QQuickItem;
class QWidget;
class QWindow;

namespace quorvance::qt {

// What a view asks of a widget and of an item, on the application's thread.

/// In the parent's coordinates; of a window's own from (0, 0).
QRectF frameOf(const QWidget& widget);
QRectF frameOf(const QQuickItem& item);

/// Direct children as they are stacked, the lowest first.
std::vector<QWidget*> childrenOf(const QWidget& widget);
std::vector<QQuickItem*> childrenOf(const QQuickItem& item);

/// Null while it is in none.
QWindow* windowOf(const QWidget& widget);
QWindow* windowOf(const QQuickItem& item);

/// Whether the place of its window is on it or on what is in it, and nothing that takes touches
/// lies above.
bool isUnder(const QWidget& widget, QPointF inWindow);
bool isUnder(const QQuickItem& item, QPointF inWindow);

QPointF mappedTo(const QWidget& widget, QPointF inWindow);
QPointF mappedTo(const QQuickItem& item, QPointF inWindow);

}  // namespace quorvance::qt
