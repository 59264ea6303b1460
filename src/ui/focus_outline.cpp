#include "ui/focus_outline.h"

#include <QAbstractScrollArea>
#include <QApplication>
#include <QEvent>
#include <QLabel>
#include <QPainter>
#include <QPointer>
#include <QPushButton>

namespace ui {

namespace {

constexpr int kInside = 4;  // pixels within a button's edge

// Lies over the widget and lets everything through.
class Outline : public QWidget {
 public:
  explicit Outline(QWidget& over) : QWidget(&over) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::NoFocus);
    over.installEventFilter(this);
    setGeometry(over.rect());
    raise();
    show();
  }

  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() == QEvent::Resize && watched == parentWidget()) setGeometry(parentWidget()->rect());
    return QWidget::eventFilter(watched, event);
  }

 protected:
  void paintEvent(QPaintEvent*) override {
    QPainter painter(this);
    if (qobject_cast<QAbstractButton*>(parentWidget()) != nullptr) {
      painter.setPen(QPen(palette().color(QPalette::ButtonText), 1, Qt::DotLine));
      painter.drawRect(rect().adjusted(kInside, kInside, -kInside - 1, -kInside - 1));
      return;
    }
    painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
    painter.drawRect(rect().adjusted(1, 1, -1, -1));
  }
};

// The button that Enter presses is drawn alike wherever the focus is.
bool needsOutline(const QWidget* widget) {
  const auto* button = qobject_cast<const QPushButton*>(widget);
  if (button != nullptr) return button->isDefault();
  return qobject_cast<const QAbstractScrollArea*>(widget) != nullptr || qobject_cast<const QLabel*>(widget) != nullptr;
}

}  // namespace

void showFocusOutlines() {
  QObject::connect(qApp, &QApplication::focusChanged, qApp,
                   [outline = QPointer<QWidget>()](QWidget*, QWidget* focused) mutable {
                     delete outline.data();
                     if (focused != nullptr && needsOutline(focused)) outline = new Outline(*focused);
                   });
}

}  // namespace ui
