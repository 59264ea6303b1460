#pragma once

#include <QStringList>
#include <QTableWidget>

namespace ui {

// A list of records to choose one from: whole rows, not edited in place, left with Tab. The columns share the width.
QTableWidget* makeRecordList(const QStringList& captions, const QString& accessibleName, const char* name);

}  // namespace ui
