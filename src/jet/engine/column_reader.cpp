#include "jet/engine/column_reader.h"

#include <cmath>
#include <unordered_map>

#include "jet/engine/columns/row_filter.h"
#include "jet/engine/engine.h"

namespace jet::engine {

namespace {

bool addCell(const Cell& cell, columns::Column& column) {
  switch (cell.kind) {
    case Cell::Kind::Null:
      return column.addNull();
    case Cell::Kind::Integer:
      return column.addInteger(cell.integer);
    case Cell::Kind::Real:
      return column.addReal(cell.real);
    case Cell::Kind::Text:
      return column.addText(cell.text);
    default:
      return false;
  }
}

bool addRow(const Query& query, std::span<columns::Column* const> columns, columns::ColumnSource::Read& read) {
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (addCell(query.cell(i), *columns[i])) continue;
    read.refused = i;
    return false;
  }
  return true;
}

}  // namespace

std::int64_t ColumnReader::rowLimit(const TableDef& table) {
  return engine_.driver().rowLimit(table);
}

bool ColumnReader::readsInOrder(const TableDef& table, std::size_t field) {
  return engine_.driver().readsInOrder(table, field);
}

bool ColumnReader::isServer() const {
  return engine_.driver().isServer();
}

columns::ColumnSource::Changes ColumnReader::changes(std::string_view table) {
  Versions& versions = engine_.versions();
  const Versions::Own& own = versions.own(table);
  return {own.changes + versions.everything(), own.rewrites + versions.everything()};
}

// The look for other copies' changes also fixes the moment that the rest of the view sees.
void ColumnReader::beginView() {
  engine_.driver().beginView();
  engine_.versions().refresh();
}

void ColumnReader::endView() noexcept {
  engine_.driver().endView();
}

columns::ColumnSource::Extent ColumnReader::extent(const TableDef& table) {
  const engine::Extent extent = engine_.driver().extent(table);
  return {extent.rows, extent.firstKey, extent.lastKey};
}

columns::ColumnSource::Read ColumnReader::readColumns(const TableDef& table, std::span<const std::size_t> fields,
                                                      std::span<columns::Column* const> columns, std::int64_t after,
                                                      std::int64_t last, columns::KeyRuns& keys) {
  const auto scan = engine_.driver().scan(table, fields, {after, last});
  Read read;
  while (scan->step()) {
    if (!addRow(*scan, columns, read)) break;
    keys.add(scan->key());
  }
  return read;
}

columns::ColumnSource::Read ColumnReader::readSelected(
    const ShapedText& text, std::span<columns::Column* const> columns,
    const std::function<void(std::span<const std::int64_t> keys)>& block) {
  Execution select = engine_.statements().open(Role::Operands, text);
  std::vector<std::int64_t> keys;
  Read read;
  while (select.step()) {
    if (!addRow(select.query(), columns, read)) return read;
    keys.push_back(select.key());
    if (keys.size() < columns::kBlockRows) continue;
    block(keys);
    keys.clear();
  }
  if (!keys.empty()) block(keys);
  read.work = select.query().work();
  return read;
}

columns::ColumnSource::Read ColumnReader::readParts(const ShapedText& text, bool exactly, columns::Column& key,
                                                    std::size_t operands,
                                                    const std::function<void(const Part& part)>& take) {
  Execution select = engine_.statements().open(exactly ? Role::ExactSums : Role::Sums, text);
  std::vector<columns::PartSum> sums(operands);
  Read read;
  while (select.step()) {
    const Query& query = select.query();
    if (!addCell(query.cell(0), key)) {
      read.refused = 0;
      return read;
    }
    Part part{.firstRow = query.key(), .rows = query.cell(1).integer, .sums = sums};
    key.integers(0, 1, &part.key);
    key.clearRows();
    for (std::size_t i = 0; i < sums.size(); ++i) {
      const Cell sum = query.cell(3 + 2 * i);
      if (!exactly && std::isnan(sum.real)) {
        read.doubtful = true;
        return read;
      }
      sums[i] = {.real = sum.real, .whole = sum.integer, .values = query.cell(2 + 2 * i).integer};
    }
    take(part);
  }
  return read;
}

std::vector<Value> ColumnReader::readRows(const TableDef& table, std::span<const std::size_t> fields,
                                          std::span<const std::int64_t> keys) {
  std::string list;
  for (const std::size_t field : fields) list += (list.empty() ? "[" : ", [") + table.fields[field].name + "]";
  const ShapedText text("select " + list + " from [" + table.name + "]");
  std::unordered_map<std::int64_t, std::size_t> places;
  for (std::size_t i = 0; i < keys.size(); ++i) places.emplace(keys[i], i);
  std::vector<Value> cells(keys.size() * fields.size());
  Execution rows = engine_.statements().openWith(Role::ReadEach, text, nullptr, keys);
  while (rows.step()) {
    const std::size_t first = places.at(rows.key()) * fields.size();
    for (std::size_t i = 0; i < fields.size(); ++i) rows.read(i, cells[first + i]);
  }
  return cells;
}

}  // namespace jet::engine
