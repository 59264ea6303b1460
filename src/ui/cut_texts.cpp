#include "ui/cut_texts.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QHeaderView>
#include <QHelpEvent>
#include <QLabel>
#include <QLineEdit>
#include <QStyleOptionComboBox>
#include <QStyleOptionFrame>
#include <QToolTip>

namespace ui {

namespace {

int widthOf(const QWidget& widget, const QString& text) {
  return widget.fontMetrics().horizontalAdvance(text);
}

QString cutHeading(const QHeaderView& header, const QPoint& place) {
  if (header.orientation() != Qt::Horizontal || header.model() == nullptr) return {};
  const int section = header.logicalIndexAt(place);
  if (section < 0 || !header.model()->headerData(section, Qt::Horizontal, Qt::ToolTipRole).toString().isEmpty())
    return {};
  const QString text = header.model()->headerData(section, Qt::Horizontal).toString();
  const int margins = 2 * header.style()->pixelMetric(QStyle::PM_HeaderMargin, nullptr, &header);
  return widthOf(header, text) + margins > header.sectionSize(section) ? text : QString();
}

QString cutCell(const QAbstractItemView& view, const QPoint& place) {
  const QModelIndex index = view.indexAt(place);
  if (!index.isValid() || !index.data(Qt::ToolTipRole).toString().isEmpty()) return {};
  const QString text = index.data().toString();
  return view.sizeHintForIndex(index).width() > view.visualRect(index).width() ? text : QString();
}

QString cutChoice(const QComboBox& box) {
  if (box.isEditable()) return {};
  QStyleOptionComboBox option;
  option.initFrom(&box);
  const QRect field = box.style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, &box);
  return widthOf(box, box.currentText()) > field.width() ? box.currentText() : QString();
}

QString cutHint(const QLineEdit& line) {
  constexpr int kInside = 4;  // pixels between the field's edges and its text, at both sides together
  QStyleOptionFrame option;
  option.initFrom(&line);
  const QRect field = line.style()->subElementRect(QStyle::SE_LineEditContents, &option, &line);
  const bool shown = line.text().isEmpty() && widthOf(line, line.placeholderText()) > field.width() - kInside;
  return shown ? line.placeholderText() : QString();
}

class CutTexts : public QObject {
 public:
  using QObject::QObject;

  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() != QEvent::ToolTip || !watched->isWidgetType()) return false;
    const auto& widget = *static_cast<QWidget*>(watched);
    const auto& help = *static_cast<QHelpEvent*>(event);
    const QString text = widget.toolTip().isEmpty() ? cutTextAt(widget, help.pos()) : QString();
    if (text.isEmpty()) return false;
    QToolTip::showText(help.globalPos(), text, static_cast<QWidget*>(watched));
    return true;
  }
};

}  // namespace

void tellCutTexts() {
  qApp->installEventFilter(new CutTexts(qApp));
}

QString cutTextAt(const QWidget& widget, const QPoint& place) {
  if (const auto* label = qobject_cast<const QLabel*>(&widget)) {
    const bool whole = label->wordWrap() || label->sizeHint().width() <= label->width();
    return whole ? QString() : label->text();
  }
  if (const auto* button = qobject_cast<const QAbstractButton*>(&widget)) {
    return button->text().isEmpty() || button->sizeHint().width() <= button->width() ? QString() : button->text();
  }
  if (const auto* box = qobject_cast<const QComboBox*>(&widget)) return cutChoice(*box);
  if (const auto* line = qobject_cast<const QLineEdit*>(&widget)) return cutHint(*line);
  const QWidget* parent = widget.parentWidget();
  if (const auto* header = qobject_cast<const QHeaderView*>(parent)) return cutHeading(*header, place);
  const auto* view = qobject_cast<const QAbstractItemView*>(parent);
  return view != nullptr && view->viewport() == &widget ? cutCell(*view, place) : QString();
}

}  // namespace ui
