#include "base/csv.h"
#include "base/printf.h"
#include "base/text.h"
#include "folders/exports.h"
#include "folders/report_file.h"
#include "folders/view_log.h"

namespace folders {

namespace {

std::string cellText(const FolderView& view, std::size_t column, const CellValue& cell) {
  if (cell.first->isNull()) return {};
  switch (formatOfKind(view.columns()[column].definition->kind).format) {
    case Format::Money:
      return plainNumber(cell.first->toDouble());
    case Format::MoneyCurrency:
      return std::string(base::trim(plainNumber(cell.first->toDouble()) + " " + cell.second->toText()));
    case Format::DateTime:
      return dateText(*cell.first, "%Y-%m-%d %H:%M:%S");
    case Format::Date:
      return dateText(*cell.first, "%Y-%m-%d");
    default:
      return view.text(column, cell);
  }
}

}  // namespace

// The seventh decimal of an amount is noise of its computation.
std::string plainNumber(double value) {
  std::string digits = base::format("%.6f", value);
  digits.erase(digits.find_last_not_of('0') + 1);
  if (digits.ends_with('.')) digits.pop_back();
  return digits == "-0" ? "0" : digits;
}

bool exportCsv(FolderView& view, const std::filesystem::path& path, CsvMark mark) {
  const auto file = openReport(path, view.services().person);
  if (!file) return false;
  if (mark == CsvMark::ByteOrder) file->write("\xEF\xBB\xBF");
  std::string line;
  for (const ViewColumn& column : view.columns()) line += (line.empty() ? "" : ",") + base::csvCell(column.caption);
  file->write(line + "\r\n");
  view.forEachRow([&](std::span<const CellValue> row) {
    line.clear();
    for (std::size_t column = 0; column < row.size(); ++column) {
      if (column > 0) line += ',';
      line += base::csvCell(cellText(view, column, row[column]));
    }
    file->write(line + "\r\n");
    return true;
  });
  file->commit();
  logWritten(view, path);
  return true;
}

}  // namespace folders
