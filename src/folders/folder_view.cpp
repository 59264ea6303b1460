#include "folders/folder_view.h"

#include <algorithm>

#include "base/text.h"

namespace folders {

namespace {

const jet::Value kNull;

std::size_t fieldIndex(const std::vector<std::string>& names, std::string_view name) {
  const auto found = std::ranges::find_if(names, [&](auto& other) { return base::equalFoldAscii(other, name); });
  if (found == names.end()) throw jet::Error(3265, "Item not found in this collection.", std::string(name));
  return static_cast<std::size_t>(found - names.begin());
}

}  // namespace

FolderView::FolderView(const FolderDefinition& definition, const FolderServices& services,
                       const ValueFormatter& formatter, int sortKey)
    : services_(services), formatter_(formatter), folder_(definition, services) {
  folder_.setSortKey(sortKey);
  folder_.open();
  try {
    setLayout(defaultLayout(definition.columns, folder_.flags()));
  } catch (...) {
    folder_.release();
    throw;
  }
}

// A result of "*" has the table's fields, found by name; any other has the select expressions in their order.
FolderView::Place FolderView::placeOf(int kind) const {
  std::size_t listed = 0;
  for (const ColumnDefinition& column : folder_.definition().columns) {
    if (column.kind == kind) {
      const std::size_t first =
          folder_.selectsAllFields() ? fieldIndex(folder_.result()->columns(), column.selects[0]) : listed;
      return {first, column.selects[1] == nullptr ? std::optional<std::size_t>() : first + 1};
    }
    for (const char* select : column.selects) listed += select != nullptr ? 1 : 0;
  }
  throw jet::Error(3265, "Item not found in this collection.", std::to_string(kind));
}

void FolderView::setLayout(const ColumnLayout& layout) {
  columns_.clear();
  places_.clear();
  for (const int kind : layout.visible) {
    places_.push_back(placeOf(kind));
    const ColumnDefinition* definition = folder_.findColumn(kind);
    columns_.push_back({definition, services_.texts.Translate(definition->caption), formatOfKind(kind).alignment,
                        layout.widthOf(kind)});
  }
}

ColumnLayout FolderView::layout() const {
  ColumnLayout layout;
  for (const ViewColumn& column : columns_) {
    layout.visible.push_back(column.definition->kind);
    if (column.width > 0) layout.widths.emplace_back(column.definition->kind, column.width);
  }
  return layout;
}

void FolderView::sort(int sortKey) {
  folder_.setSortKey(sortKey);
  folder_.open();
}

void FolderView::refresh() {
  folder_.updateCondition();
  folder_.open();
}

std::vector<std::vector<std::string>> FolderView::rows(std::int64_t first, std::int64_t count) {
  const jet::Snapshot read = folder_.result()->rows(first, count);
  std::vector<std::vector<std::string>> texts(read.rowCount());
  for (std::size_t row = 0; row < texts.size(); ++row) {
    for (std::size_t column = 0; column < columns_.size(); ++column) {
      const Place& place = places_[column];
      texts[row].push_back(
          text(column, {&read.at(row, place.first), place.second ? &read.at(row, *place.second) : &kNull}));
    }
  }
  return texts;
}

bool FolderView::rowHidden(std::int64_t position) {
  const auto& names = folder_.result()->columns();
  if (std::ranges::find(names, "Hidden") == names.end()) return false;
  const jet::Snapshot row = folder_.result()->rows(position, 1);
  return !row.empty() && row.at(0, "Hidden").toBool();
}

std::string FolderView::text(std::size_t column, const CellValue& cell) const {
  return formatter_.formatCell(columns_[column].definition->kind, *cell.first, *cell.second);
}

void FolderView::forEachRow(const std::function<bool(std::span<const CellValue>)>& row) {
  std::vector<CellValue> cells(columns_.size());
  std::int64_t handedOut = 0;
  services_.main.forEachRow(folder_.BuildQuery(), [&](const std::vector<jet::Value>& values) {
    for (std::size_t column = 0; column < cells.size(); ++column) {
      const Place& place = places_[column];
      cells[column] = {&values[place.first], place.second ? &values[*place.second] : &kNull};
    }
    if (watcher_ && ++handedOut % kWatchedRows == 0) watcher_(handedOut);
    return row(cells);
  });
}

void FolderView::Totals::add(std::span<const CellValue> row) {
  for (std::size_t column = 0; column < row.size(); ++column) {
    if (!formatOfKind(view_.columns()[column].definition->kind).summed) continue;
    sums_[column] = sums_[column].value_or(0) + row[column].first->toDouble();
  }
}

std::string FolderView::Totals::text(std::size_t column) const {
  if (!sums_[column]) return {};
  return view_.formatter().formatTotal(view_.columns()[column].definition->kind, *sums_[column]);
}

std::vector<std::string> FolderView::totals() {
  Totals totals(*this);
  forEachRow([&](std::span<const CellValue> row) {
    totals.add(row);
    return true;
  });
  std::vector<std::string> texts;
  for (std::size_t column = 0; column < columns_.size(); ++column) texts.push_back(totals.text(column));
  return texts;
}

}  // namespace folders
