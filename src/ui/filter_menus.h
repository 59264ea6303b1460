#pragma once

#include <QMenu>
#include <functional>

#include "server/server_doc.h"
#include "ui/texts.h"

namespace ui {

// What the menus of periods and of saved filters need; `changed` is called when the filter is another one.
struct FilterMenuTarget {
  server::CServerDoc& document;
  const Texts& texts;
  QWidget* parent;
  std::function<void()> changed;
};

// The periods that have names, a day to begin with, and none. Filled when it opens.
void fillPeriodMenu(QMenu& menu, const FilterMenuTarget& target);
// The saved filters of this workstation and those shared by all; to keep the present one, and to delete one.
void fillSavedFilterMenu(QMenu& menu, const FilterMenuTarget& target);

}  // namespace ui
