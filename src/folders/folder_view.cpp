#include "folders/folder_view.h"

#include <algorithm>
#include <cstdlib>

#include "base/text.h"

namespace folders {

namespace {

const jet::Value kNull;

std::optional<std::size_t> findField(const std::vector<std::string>& names, std::string_view name) {
  const auto found = std::ranges::find_if(names, [&](auto& other) { return base::equalFoldAscii(other, name); });
  return found == names.end() ? std::nullopt : std::optional(static_cast<std::size_t>(found - names.begin()));
}

std::size_t fieldIndex(const std::vector<std::string>& names, std::string_view name) {
  if (const auto found = findField(names, name)) return *found;
  throw jet::Error(3265, "Item not found in this collection.", std::string(name));
}

// " = 'value'", as the SQL dialect writes it.
std::string comparisonWith(const jet::Value& value) {
  if (value.isNull()) return " is null";
  if (value.type() == jet::Type::Text) return " = '" + base::replaceAll(value.text(), "'", "''") + "'";
  return " = " + value.toText();
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

void FolderView::narrow(std::optional<Narrowing> narrowing) {
  folder_.narrow(narrowing ? narrowing->criteria : std::string());
  narrowing_ = std::move(narrowing);
  folder_.open();
}

// The group's value is the key, the first column of the result.
std::optional<Narrowing> FolderView::callsBehind(std::int64_t position) {
  const FolderDefinition& definition = folder_.definition();
  const jet::Snapshot row = folder_.result()->rows(position, 1);
  if (!isStatistic(definition) || row.empty()) return std::nullopt;
  const jet::Value& group = row.at(0, 0);
  const ColumnDefinition& shown = definition.columns[1];
  const std::string text = formatter_.formatCell(shown.kind, group, kNull);
  return Narrowing{definition.grouping + comparisonWith(group),
                   services_.texts.Translate(shown.caption) + ": " + (text.empty() ? std::string("-") : text)};
}

void FolderView::useSettings(const filter::FilterSettings& settings) {
  if (folder_.definition().condition != ConditionSource::CallFilter) return;
  folder_.setCondition(services_.filter.conditionOf(settings));
  folder_.open();
}

void FolderView::refresh() {
  folder_.updateCondition();
  folder_.open();
}

CellValue FolderView::cellOf(const jet::Snapshot& rows, std::size_t row, std::size_t column) const {
  const Place& place = places_[column];
  return {&rows.at(row, place.first), place.second ? &rows.at(row, *place.second) : &kNull};
}

template <typename ValueAt>
FolderView::ShownRow FolderView::shownRow(const ValueAt& valueAt) const {
  const auto key = findField(folder_.result()->columns(), "RecordID");
  const auto mark = findField(folder_.result()->columns(), "Hidden");
  ShownRow shown;
  for (std::size_t column = 0; column < columns_.size(); ++column) {
    const Place& place = places_[column];
    shown.texts.push_back(text(column, {&valueAt(place.first), place.second ? &valueAt(*place.second) : &kNull}));
  }
  if (key) shown.key = valueAt(*key).toText();
  if (mark) shown.hidden = valueAt(*mark).toBool();
  return shown;
}

std::vector<FolderView::ShownRow> FolderView::shownRows(std::int64_t first, std::int64_t count) {
  const jet::Snapshot read = folder_.result()->rows(first, count);
  std::vector<ShownRow> shown;
  for (std::size_t row = 0; row < read.rowCount(); ++row) {
    shown.push_back(shownRow([&](std::size_t place) -> const jet::Value& { return read.at(row, place); }));
  }
  return shown;
}

void FolderView::forEachOrderedRow(const std::function<bool(OrderedRow&&)>& row) {
  const std::size_t by = placeOf(std::abs(folder_.sortKey())).first;
  const std::size_t key = fieldIndex(folder_.result()->columns(), "RecordID");
  services_.main.forEachRow(folder_.BuildQuery(), [&](const std::vector<jet::Value>& values) {
    return row({values[by], values[key].toLong(),
                shownRow([&](std::size_t place) -> const jet::Value& { return values[place]; })});
  });
}

std::vector<std::vector<std::string>> FolderView::rows(std::int64_t first, std::int64_t count) {
  std::vector<std::vector<std::string>> texts;
  for (ShownRow& row : shownRows(first, count)) texts.push_back(std::move(row.texts));
  return texts;
}

std::string FolderView::text(std::size_t column, const CellValue& cell) const {
  return formatter_.formatCell(columns_[column].definition->kind, *cell.first, *cell.second);
}

void FolderView::readRows(std::int64_t first, std::int64_t count, const RowReader& row) {
  constexpr std::int64_t kPage = 512;
  std::vector<CellValue> cells(columns_.size());
  for (const std::int64_t end = first + count; first < end; first += kPage) {
    const jet::Snapshot page = folder_.result()->rows(first, std::min(kPage, end - first));
    for (std::size_t i = 0; i < page.rowCount(); ++i) {
      for (std::size_t column = 0; column < cells.size(); ++column) cells[column] = cellOf(page, i, column);
      if (!row(cells)) return;
    }
  }
}

void FolderView::forEachRow(const RowReader& row) {
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

FolderView::Totals::Totals(const FolderView& view) : view_(view), sums_(view.columns().size()) {
  for (std::size_t column = 0; column < sums_.size(); ++column) {
    if (formatOfKind(view.columns()[column].definition->kind).summed) summed_.push_back(column);
  }
}

void FolderView::Totals::add(std::span<const CellValue> row) {
  for (const std::size_t column : summed_) {
    sums_[column] = sums_[column].value_or(0) + row[column].first->toDouble();
  }
}

std::string FolderView::Totals::text(std::size_t column) const {
  if (!sums_[column]) return {};
  return view_.formatter().formatTotal(view_.columns()[column].definition->kind, *sums_[column]);
}

std::string FolderView::Totals::textWithCurrency(std::size_t column) const {
  const std::string total = text(column);
  const std::string currency = view_.services().currencies.Default().name;
  const bool money = formatOfKind(view_.columns()[column].definition->kind).format == Format::Money;
  return total.empty() || currency.empty() || !money ? total : total + " " + currency;
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
