// A check box for fingers that draws its own tick, sharp at every scale.
#pragma once

#include <QCheckBox>
#include <QPainter>
#include <QStyleOptionButton>

namespace qt_bank {

class TickBox : public QCheckBox {
 public:
  using QCheckBox::QCheckBox;

 protected:
  // All of it takes a finger, not the words alone.
  bool hitButton(const QPoint& place) const override { return rect().contains(place); }

  void paintEvent(QPaintEvent* event) override {
    QCheckBox::paintEvent(event);
    if (!isChecked()) return;
    QStyleOptionButton option;
    initStyleOption(&option);
    const QRectF box = style()->subElementRect(QStyle::SE_CheckBoxIndicator, &option, this);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen({Qt::white, box.width() / 9, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin});
    const auto at = [&](double x, double y) {
      return box.topLeft() + QPointF(x * box.width(), y * box.height());
    };
    painter.drawPolyline(QPolygonF{at(0.26, 0.52), at(0.43, 0.68), at(0.75, 0.33)});
  }
};

}  // namespace qt_bank
