#include "ui/painted_view.h"

#include <QAccessible>
#include <QAccessibleWidget>

namespace ui {

namespace {

class PaintedInterface : public QAccessibleWidget {
 public:
  explicit PaintedInterface(PaintedView& view) : QAccessibleWidget(&view, QAccessible::Chart), view_(view) {}

  [[nodiscard]] QString text(QAccessible::Text which) const override {
    return which == QAccessible::Value ? view_.markedText() : QAccessibleWidget::text(which);
  }

 private:
  const PaintedView& view_;
};

QAccessibleInterface* interfaceOf(const QString&, QObject* object) {
  auto* view = dynamic_cast<PaintedView*>(object);
  return view != nullptr ? new PaintedInterface(*view) : nullptr;
}

}  // namespace

PaintedView::PaintedView(QWidget* parent) : QWidget(parent) {
  [[maybe_unused]] static const bool known = [] {
    QAccessible::installFactory(interfaceOf);
    return true;
  }();
}

void PaintedView::tellMarked() {
  if (!QAccessible::isActive()) return;
  QAccessibleValueChangeEvent change(this, markedText());
  QAccessible::updateAccessibility(&change);
}

}  // namespace ui
