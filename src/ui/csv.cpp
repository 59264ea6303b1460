#include "ui/csv.h"

namespace ui {

QString csvLine(const QStringList& cells) {
  QStringList quoted;
  for (QString cell : cells) {
    if (cell.contains(',') || cell.contains('"') || cell.contains('\n') || cell.contains('\r')) {
      cell = '"' + cell.replace("\"", "\"\"") + '"';
    }
    quoted << cell;
  }
  return quoted.join(',') + "\r\n";
}

std::vector<QStringList> readCsv(const QString& text) {
  const QString firstLine = text.section('\n', 0, 0);
  const QChar separator = firstLine.count(';') > firstLine.count(',') ? ';' : ',';
  std::vector<QStringList> rows;
  QStringList row;
  QString cell;
  bool quoted = false;
  const auto endCell = [&] {
    row << cell;
    cell.clear();
  };
  const auto endRow = [&] {
    endCell();
    if (row.size() > 1 || !row.front().isEmpty()) rows.push_back(row);
    row.clear();
  };
  for (qsizetype i = 0; i < text.size(); ++i) {
    const QChar c = text[i];
    if (quoted) {
      if (c != '"') {
        cell += c;
      } else if (i + 1 < text.size() && text[i + 1] == '"') {
        cell += text[++i];
      } else {
        quoted = false;
      }
    } else if (c == '"' && cell.isEmpty()) {
      quoted = true;
    } else if (c == separator) {
      endCell();
    } else if (c == '\n') {
      endRow();
    } else if (c != '\r') {
      cell += c;
    }
  }
  if (!cell.isEmpty() || !row.isEmpty()) endRow();
  return rows;
}

}  // namespace ui
