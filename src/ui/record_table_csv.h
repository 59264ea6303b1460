#pragma once

#include <QWidget>

#include "ui/record_table_model.h"
#include "ui/texts.h"

namespace ui {

// Tables as CSV files with the captions as first line. What went wrong is told.

// False when the file could not be written.
bool exportTable(const RecordTableModel& model, const Texts& texts, QWidget* parent, const QString& file);
// Asks for the file. Columns are matched by their captions, so a file may hold them in another order. Asks whether the
// records replace those of the table or come after them; a table of fixed rows takes each by its first column. False
// when nothing was changed.
bool importTable(RecordTableModel& model, const Texts& texts, QWidget* parent);

}  // namespace ui
