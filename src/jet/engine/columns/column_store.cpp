#include "jet/engine/columns/column_store.h"

#include <algorithm>

namespace jet::columns {

namespace {

// The columns of a statistic over ten million calls take about 200 MB, those of all statistics about 430.
constexpr std::size_t kMostBytes = std::size_t{448} << 20U;

constexpr std::int64_t kBeforeAll = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kBehindAll = std::numeric_limits<std::int64_t>::max();

std::size_t expectedBytes(Type type) {
  switch (type) {
    case Type::Double:
      return sizeof(double);
    case Type::DateTime:
      return sizeof(std::int32_t);
    default:
      return sizeof(std::int16_t);
  }
}

}  // namespace

void ColumnStore::forget() {
  held_.clear();
  held_.resize(definition_->fields.size());
  keys_.reset();
  counted_.reset();
  work_ = 0;
}

void ColumnStore::refresh(const std::shared_ptr<const TableDef>& definition) {
  const ColumnSource::Changes now = source_.changes(definition->name);
  if (definition != definition_ || now.rewrites != changes_.rewrites) {
    definition_ = definition;
    forget();
  } else if (now.rows != changes_.rows && !extend()) {
    forget();
  }
  changes_ = now;
}

// Reads the rows behind those held, for every column.
bool ColumnStore::extend() {
  counted_.reset();
  if (keys_ == nullptr) return true;
  std::vector<std::size_t> fields;
  std::vector<Column*> columns;
  for (std::size_t i = 0; i < held_.size(); ++i) {
    if (held_[i].column == nullptr) continue;
    fields.push_back(i);
    columns.push_back(held_[i].column.get());
  }
  for (Column* column : columns) column->reserve(rowLimit());
  const std::int64_t behind = keys_->rows() == 0 ? kBeforeAll : keys_->last();
  try {
    return source_.readColumns(*definition_, fields, columns, behind, kBehindAll, *keys_).complete();
  } catch (...) {
    forget();  // some columns may have a row more than others
    throw;
  }
}

// Keys without a gap, as most tables have them, are known by the first and the last.
std::int64_t ColumnStore::countRows() {
  if (keys_ != nullptr) return static_cast<std::int64_t>(keys_->rows());
  if (counted_) return *counted_;
  const ColumnSource::Extent extent = source_.extent(*definition_);
  counted_ = extent.rows;
  if (extent.rows > 0 && extent.lastKey - extent.firstKey == extent.rows - 1) {
    keys_ = std::make_shared<KeyRuns>();
    keys_->addRun(extent.firstKey, static_cast<std::size_t>(extent.rows));
  }
  return extent.rows;
}

bool ColumnStore::refuses(std::span<const std::size_t> fields) const {
  return std::ranges::any_of(fields, [this](std::size_t field) { return held_[field].refused; });
}

bool ColumnStore::load(std::span<const std::size_t> fields, bool eager) {
  if (fields.empty()) return keys_ != nullptr;
  std::vector<std::size_t> missing;
  ++uses_;
  for (const std::size_t field : fields) {
    held_[field].lastUsed = uses_;
    if (held_[field].column == nullptr) missing.push_back(field);
  }
  if (missing.empty()) return true;
  if ((!eager && work_ < source_.rowLimit(*definition_)) || !makeRoom(missing)) return false;
  return read(missing);
}

bool ColumnStore::read(std::span<const std::size_t> fields) {
  std::vector<std::unique_ptr<Column>> made;
  std::vector<Column*> columns;
  for (const std::size_t field : fields) {
    made.push_back(std::make_unique<Column>(definition_->fields[field].type));
    columns.push_back(made.back().get());
    columns.back()->reserve(rowLimit());
  }
  auto keys = std::make_shared<KeyRuns>();
  const bool none = keys_ != nullptr && keys_->rows() == 0;
  const std::int64_t last = keys_ == nullptr ? kBehindAll : none ? kBeforeAll : keys_->last();
  const ColumnSource::Read read = source_.readColumns(*definition_, fields, columns, kBeforeAll, last, *keys);
  if (!read.complete()) {
    refuse(fields[read.refused]);
    return false;
  }
  if (keys_ == nullptr) keys_ = std::move(keys);
  for (std::size_t i = 0; i < made.size(); ++i) held_[fields[i]].column = std::move(made[i]);
  return true;
}

// At least the number of rows, with those that were added since.
std::size_t ColumnStore::rowLimit() {
  std::int64_t rows = countRows();
  if (rows > 0 && keys_ != nullptr) rows += std::max<std::int64_t>(source_.rowLimit(*definition_) - keys_->last(), 0);
  return static_cast<std::size_t>(rows);
}

// Columns not used for longest give way.
bool ColumnStore::makeRoom(std::span<const std::size_t> missing) {
  const std::size_t rows = rowLimit();
  std::size_t needed = 0;
  for (const std::size_t field : missing) needed += rows * expectedBytes(definition_->fields[field].type);
  while (bytes() + needed > kMostBytes) {
    Held* oldest = nullptr;
    for (Held& held : held_) {
      const bool free = held.column != nullptr && held.lastUsed != uses_;
      if (free && (oldest == nullptr || held.lastUsed < oldest->lastUsed)) oldest = &held;
    }
    if (oldest == nullptr) return false;
    oldest->column.reset();
  }
  return true;
}

std::size_t ColumnStore::bytes() const {
  std::size_t sum = 0;
  for (const Held& held : held_) sum += held.column != nullptr ? held.column->bytes() : 0;
  return sum;
}

std::vector<const Column*> ColumnStore::columns() const {
  std::vector<const Column*> all;
  for (const Held& held : held_) all.push_back(held.column.get());
  return all;
}

}  // namespace jet::columns
