#include "jet/engine/memory_source.h"

#include <numeric>

#include "jet/engine/engine.h"

namespace jet::engine {

static_assert(memory::RowSource::kMostKeys <= kAmongKeys);

memory::VersionCounters MemorySource::versionCounters(std::string_view table) {
  Versions& versions = engine_.versions();
  return {&versions.own(table).changes, &versions.everything()};
}

std::shared_ptr<const TableDef> MemorySource::definition(std::string_view table) {
  return engine_.driver().definition(table);
}

std::int64_t MemorySource::rowLimit(const TableDef& table) {
  return engine_.driver().rowLimit(table);
}

void MemorySource::readRows(const TableDef& table, const std::function<bool(const std::vector<Value>&)>& row) {
  std::vector<std::size_t> fields(table.fields.size());
  std::iota(fields.begin(), fields.end(), std::size_t{0});
  const auto scan = engine_.driver().scan(table, fields, {});
  std::vector<Value> cells(fields.size());
  while (scan->step()) {
    for (std::size_t i = 0; i < cells.size(); ++i) cells[i] = valueOf(scan->cell(i), table.fields[i].type);
    if (!row(cells)) return;
  }
}

void MemorySource::readTexts(const TableDef& table, const FieldDef& column,
                             const std::function<bool(std::int64_t key, std::string_view text)>& text) {
  const std::size_t field = static_cast<std::size_t>(&column - table.fields.data());
  const auto scan = engine_.driver().scan(table, {&field, 1}, {});
  while (scan->step()) {
    const Cell cell = scan->cell(0);
    if (cell.kind == Cell::Kind::Text && !text(scan->key(), cell.text)) return;
  }
}

std::shared_ptr<const bind::BoundQuery> MemorySource::bind(std::string_view sql) {
  return engine_.statements().bound(ShapedText(sql, masks_));
}

std::shared_ptr<const ResultTable> MemorySource::runSelect(std::string_view sql) {
  return engine_.runSelect(ShapedText(sql, masks_));
}

std::shared_ptr<const ResultTable> MemorySource::runSelectAmong(std::string_view sql,
                                                                std::span<const std::int64_t> keys) {
  return engine_.runSelect(ShapedText(sql, masks_), keys);
}

}  // namespace jet::engine
