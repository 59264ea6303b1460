#pragma once

#include <QPoint>
#include <QString>
#include <QWidget>

namespace ui {

// From now on a text that its widget has no room for is told whole where the pointer rests, unless the widget has a tip
// of its own there.
void tellCutTexts();

// The text at that place of the widget that is not shown whole: of a label, a button, a heading, a cell, the choice of
// a box, the hint of an empty field. Empty when there is none.
[[nodiscard]] QString cutTextAt(const QWidget& widget, const QPoint& place);

}  // namespace ui
