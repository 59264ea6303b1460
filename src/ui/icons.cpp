#include "ui/icons.h"

#include <QApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPainterPath>
#include <QPalette>

namespace ui {

namespace {

// Drawings are on a square of 24 units.
constexpr qreal kUnits = 24;

struct Brushes {
  QPen line;
  QColor accent;
};

void drawHandset(QPainter& p) {
  QPainterPath path;
  path.moveTo(6, 4);
  path.quadTo(4, 12, 10, 17);
  path.quadTo(14, 21, 20, 19);
  p.drawPath(path);
  p.drawLine(QPointF(6, 4), QPointF(9, 8));
  p.drawLine(QPointF(20, 19), QPointF(16, 15));
}

void drawBars(QPainter& p, const Brushes& b) {
  p.fillRect(QRectF(5, 13, 3.5, 6), b.accent);
  p.fillRect(QRectF(10.5, 8, 3.5, 11), b.accent);
  p.fillRect(QRectF(16, 4.5, 3.5, 14.5), b.accent);
  p.drawLine(QPointF(3, 20), QPointF(21, 20));
}

void drawPerson(QPainter& p, QPointF at, qreal scale) {
  p.drawEllipse(at, 3.2 * scale, 3.2 * scale);
  QPainterPath body;
  body.moveTo(at + QPointF(-6, 11) * scale);
  body.quadTo(at + QPointF(0, 0.5) * scale, at + QPointF(6, 11) * scale);
  p.drawPath(body);
}

void drawPage(QPainter& p) {
  p.drawRoundedRect(QRectF(5, 3, 14, 18), 1.5, 1.5);
  for (const qreal y : {8.0, 12.0, 16.0}) p.drawLine(QPointF(8, y), QPointF(16, y));
}

void drawFunnel(QPainter& p, QPointF at, qreal scale, const Brushes& b) {
  QPainterPath path;
  path.moveTo(at);
  for (const QPointF corner : {QPointF(12, 0), QPointF(7.5, 6), QPointF(7.5, 12), QPointF(4.5, 10), QPointF(4.5, 6)}) {
    path.lineTo(at + corner * scale);
  }
  path.closeSubpath();
  p.fillPath(path, b.accent);
}

void drawArrow(QPainter& p) {
  p.drawLine(QPointF(12, 3), QPointF(12, 14));
  p.drawLine(QPointF(7.5, 10), QPointF(12, 14.5));
  p.drawLine(QPointF(16.5, 10), QPointF(12, 14.5));
  p.drawPolyline(QPolygonF({{4, 15}, {4, 20}, {20, 20}, {20, 15}}));
}

void drawGear(QPainter& p, const Brushes& b) {
  p.drawEllipse(QPointF(12, 12), 5, 5);
  p.setBrush(b.accent);
  p.drawEllipse(QPointF(12, 12), 1.4, 1.4);
  p.setBrush(Qt::NoBrush);
  for (int i = 0; i < 8; ++i) {
    p.save();
    p.translate(12, 12);
    p.rotate(45.0 * i);
    p.drawLine(QPointF(0, -6), QPointF(0, -9));
    p.restore();
  }
}

void drawLoop(QPainter& p) {
  p.drawArc(QRectF(5, 5, 14, 14), 40 * 16, 280 * 16);
  p.drawLine(QPointF(17.5, 3.5), QPointF(17.4, 8));
  p.drawLine(QPointF(17.4, 8), QPointF(13, 8));
}

void draw(Icon which, QPainter& p, const Brushes& b) {
  switch (which) {
    case Icon::Calls:
    case Icon::Program:
      drawHandset(p);
      break;
    case Icon::Statistic:
      drawBars(p, b);
      break;
    case Icon::Clock:
      p.drawEllipse(QPointF(12, 12), 8.5, 8.5);
      p.drawPolyline(QPolygonF({{12, 7}, {12, 12}, {16, 14}}));
      break;
    case Icon::Calendar:
      p.drawRoundedRect(QRectF(4, 5, 16, 15), 1.5, 1.5);
      p.fillRect(QRectF(4, 5, 16, 4), b.accent);
      p.drawLine(QPointF(8, 3), QPointF(8, 6));
      p.drawLine(QPointF(16, 3), QPointF(16, 6));
      break;
    case Icon::Users:
      drawPerson(p, {12, 8}, 1);
      break;
    case Icon::Groups:
      drawPerson(p, {8.5, 9}, 0.8);
      drawPerson(p, {16, 9}, 0.8);
      break;
    case Icon::Log:
      drawPage(p);
      break;
    case Icon::LogFiltered:
      drawPage(p);
      drawFunnel(p, {12, 11}, 0.9, b);
      break;
    case Icon::Contacts:
      p.drawRoundedRect(QRectF(4, 4, 16, 16), 1.5, 1.5);
      drawPerson(p, {12, 9.5}, 0.7);
      break;
    case Icon::Filter:
      drawFunnel(p, {4, 5}, 1.35, b);
      break;
    case Icon::Import:
      drawArrow(p);
      break;
    case Icon::Report:
      drawPage(p);
      p.fillRect(QRectF(8, 14, 3, 4), b.accent);
      p.fillRect(QRectF(12.5, 11, 3, 7), b.accent);
      break;
    case Icon::Bill:
      p.drawRoundedRect(QRectF(4, 6, 16, 12), 1.5, 1.5);
      p.setBrush(b.accent);
      p.drawEllipse(QPointF(12, 12), 2.6, 2.6);
      break;
    case Icon::Settings:
      drawGear(p, b);
      break;
    case Icon::Search:
      p.drawEllipse(QPointF(10.5, 10.5), 6, 6);
      p.drawLine(QPointF(15, 15), QPointF(20, 20));
      break;
    case Icon::Recalc:
      drawLoop(p);
      break;
    case Icon::Back:
      p.drawLine(QPointF(4, 12), QPointF(20, 12));
      p.drawPolyline(QPolygonF({{10, 6}, {4, 12}, {10, 18}}));
      break;
  }
}

class Engine : public QIconEngine {
 public:
  explicit Engine(Icon which) : which_(which) {}

  void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override {
    const QPalette palette = QApplication::palette();
    const auto group = mode == QIcon::Disabled ? QPalette::Disabled : QPalette::Active;
    const QColor line = palette.color(group, mode == QIcon::Selected ? QPalette::HighlightedText : QPalette::Text);
    QColor accent = mode == QIcon::Selected ? line : QColor(0x2a, 0x7f, 0xc9);
    if (mode == QIcon::Disabled) accent = line;
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->translate(rect.topLeft());
    painter->scale(rect.width() / kUnits, rect.height() / kUnits);
    const Brushes brushes{QPen(line, 1.7, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin), accent};
    painter->setPen(brushes.line);
    draw(which_, *painter, brushes);
    painter->restore();
  }

  QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
    QPixmap image(size);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    paint(&painter, QRect(QPoint(0, 0), size), mode, state);
    return image;
  }

  [[nodiscard]] QIconEngine* clone() const override { return new Engine(which_); }

 private:
  Icon which_;
};

}  // namespace

QIcon icon(Icon which) {
  return QIcon(new Engine(which));
}

}  // namespace ui
