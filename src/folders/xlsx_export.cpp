#include <memory>
#include <system_error>

#include "folders/exports.h"
#include "folders/view_log.h"
#include "folders/xlsx_book.h"

namespace folders {

namespace {

void writeCell(XlsxBook& book, const FolderView& view, std::size_t column, const CellValue& cell) {
  const jet::Value& value = *cell.first;
  const Format format = formatOfKind(view.columns()[column].definition->kind).format;
  switch (format) {
    case Format::Money:
      return book.money(column, value.toDouble());
    case Format::MoneyCurrency:
      return book.money(column, value.toDouble(), cell.second->toText());
    case Format::Duration:
    case Format::Minutes:
      return book.duration(column, value.toDouble());
    case Format::Digits:
      if (const auto number = value.asNumber()) return book.number(column, *number);
      break;
    case Format::DateTime:
      if (const auto moment = value.toDateTime()) return book.dateTime(column, *moment);
      break;
    case Format::Date:
      if (const auto day = value.toDateTime()) return book.date(column, *day);
      break;
    default:
      break;
  }
  book.text(column, view.text(column, cell));
}

}  // namespace

bool exportXlsx(FolderView& view, const std::filesystem::path& path) {
  std::vector<std::string> headings;
  for (const ViewColumn& column : view.columns()) headings.push_back(column.caption);
  const auto book = openXlsx(path, std::move(headings), view.services().person);
  if (!book) return false;
  view.forEachRow([&](std::span<const CellValue> row) {
    book->beginRow();
    for (std::size_t column = 0; column < row.size(); ++column) {
      if (!row[column].first->isNull()) writeCell(*book, view, column, row[column]);
    }
    return true;
  });
  book->close();
  logWritten(view, path);
  return true;
}

}  // namespace folders
