#pragma once

#include <QWidget>

namespace ui {

// Makes a page as narrow as its words allow: captions of forms wrap and are above their fields, lists of choices are no
// wider than they must be. For a page that would have to be scrolled sideways to be read; its fields keep their order.
void makeNarrow(QWidget& page);

}  // namespace ui
