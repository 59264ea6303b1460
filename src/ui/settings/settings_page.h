#pragma once

#include <QString>
#include <QWidget>
#include <functional>

#include "ui/record_table.h"

namespace ui {

// One page of the settings sheet. Pages edit copies; save() writes them when the sheet is confirmed or applied.
struct SettingsPage {
  QString caption;
  QWidget* widget = nullptr;  // owned by the sheet
  // Checks what was entered; an empty text when it can be saved, else a sentence that says what to correct.
  std::function<QString()> check;
  // Writes what was changed. Throws jet::Error.
  std::function<void()> save;
  // Whether something was edited that save() would write; empty for the tables, whose lists tell.
  std::function<bool()> changed;
  RecordTable* table = nullptr;  // of the pages that are a table
  bool reported = false;         // the table is on the page for the browser
};

}  // namespace ui
