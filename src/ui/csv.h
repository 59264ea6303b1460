#pragma once

#include <QString>
#include <QStringList>
#include <vector>

namespace ui {

// RFC 4180: cells with a comma, quote or line end are quoted; quotes are doubled; lines end in CR LF.
QString csvLine(const QStringList& cells);
// Rows of a CSV text; a semicolon serves as separator when the first line holds more of them than commas (spreadsheets
// of countries with a decimal comma write it so).
std::vector<QStringList> readCsv(const QString& text);

}  // namespace ui
