#include "ui/readable_style.h"

#include <QApplication>
#include <QPainter>
#include <QProxyStyle>
#include <QStyleOption>

#include "ui/readable_palette.h"

namespace ui {

namespace {

// Of the way from the ground to the text: more than 3 to 1 on either palette, and less than the text itself.
constexpr double kEdgePart = 0.6;

class ReadableStyle : public QProxyStyle {
 public:
  using QProxyStyle::QProxyStyle;

  void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override {
    QProxyStyle::drawPrimitive(element, option, painter, widget);
    const bool round = element == PE_IndicatorRadioButton;
    if (!round && element != PE_IndicatorCheckBox && element != PE_IndicatorItemViewItemCheck) return;
    const QPalette::ColorGroup group = (option->state & State_Enabled) != 0 ? QPalette::Active : QPalette::Disabled;
    const QPalette& colours = option->palette;
    painter->save();
    painter->setPen(mixed(colours.color(group, QPalette::Base), colours.color(group, QPalette::Text), kEdgePart));
    painter->setBrush(Qt::NoBrush);
    painter->setRenderHint(QPainter::Antialiasing, round);
    const QRect edge = option->rect.adjusted(0, 0, -1, -1);
    round ? painter->drawEllipse(edge) : painter->drawRect(edge);
    painter->restore();
  }
};

}  // namespace

void useReadableStyle() {
  const QString name = QApplication::style()->name();
  if (name == "fusion") QApplication::setStyle(new ReadableStyle(name));
}

}  // namespace ui
