#include "jet/engine/columns/column_store.h"

#include <algorithm>
#include <iterator>

namespace jet::columns {

namespace {

// The columns of a statistic over ten million calls take about 200 MB, those of all statistics about 430.
constexpr std::size_t kMostBytes = std::size_t{448} << 20U;

constexpr std::int64_t kBeforeAll = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kBehindAll = std::numeric_limits<std::int64_t>::max();

// Rows read ahead at a time, about: a few milliseconds.
constexpr std::int64_t kAheadRows = 2048;

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
  reading_.reset();
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

// Reads the rows after those held, for every column.
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
  if (counted_) return counted_->rows;
  const ColumnSource::Extent extent = source_.extent(*definition_);
  counted_ = extent;
  if (extent.rows > 0 && extent.lastKey - extent.firstKey == extent.rows - 1) {
    keys_ = std::make_shared<KeyRuns>();
    keys_->addRun(extent.firstKey, static_cast<std::size_t>(extent.rows));
  }
  return extent.rows;
}

bool ColumnStore::refuses(std::span<const std::size_t> fields) const {
  return std::ranges::any_of(fields, [this](std::size_t field) { return held_[field].refused; });
}

std::vector<std::size_t> ColumnStore::missing(std::span<const std::size_t> fields) const {
  std::vector<std::size_t> missing;
  std::ranges::copy_if(fields, std::back_inserter(missing),
                       [this](std::size_t field) { return held_[field].column == nullptr; });
  return missing;
}

bool ColumnStore::load(std::span<const std::size_t> fields, bool eager) {
  if (fields.empty()) return keys_ != nullptr;
  ++uses_;
  for (const std::size_t field : fields) held_[field].lastUsed = uses_;
  const std::vector<std::size_t> wanted = missing(fields);
  if (wanted.empty()) return true;
  if (!eager && work_ < source_.rowLimit(*definition_)) return false;
  if (!isRead(wanted)) {
    if (!makeRoom(wanted)) return false;
    beginReading(wanted);
  }
  return readOn(Part::Rest) == Read::Complete;
}

bool ColumnStore::readAhead(std::span<const std::size_t> fields, const std::function<bool()>& goesOn) {
  const std::vector<std::size_t> wanted = missing(fields);
  if (wanted.empty() || refuses(wanted)) return false;
  if (!isRead(wanted)) {
    reading_.reset();
    if (bytes() + bytesNeeded(wanted) > kMostBytes) return false;
    for (const std::size_t field : wanted) held_[field].lastUsed = uses_;
    beginReading(wanted);
  }
  while (readOn(Part::Step) == Read::More) {
    if (!goesOn()) return true;
  }
  return false;
}

bool ColumnStore::isRead(std::span<const std::size_t> fields) const {
  return reading_ && std::ranges::all_of(fields, [this](std::size_t field) {
           return std::ranges::find(reading_->fields, field) != reading_->fields.end();
         });
}

ColumnSource::Extent ColumnStore::extent() {
  const std::int64_t rows = countRows();
  if (keys_ == nullptr) return *counted_;
  return rows == 0 ? ColumnSource::Extent() : ColumnSource::Extent{rows, keys_->key(0), keys_->last()};
}

void ColumnStore::beginReading(std::span<const std::size_t> fields) {
  const ColumnSource::Extent extent = this->extent();
  Reading reading{{fields.begin(), fields.end()}, {}, std::make_shared<KeyRuns>(), kBeforeAll, kBeforeAll, 0};
  if (extent.rows > 0) {
    reading.readTo = extent.firstKey - 1;
    reading.lastKey = extent.lastKey;
    reading.stepKeys = kAheadRows * ((extent.lastKey - extent.firstKey) / extent.rows + 1);  // wider with gaps
  }
  for (const std::size_t field : fields) {
    reading.columns.push_back(std::make_unique<Column>(definition_->fields[field].type));
    reading.columns.back()->reserve(rowLimit());
  }
  reading_ = std::move(reading);
}

// All columns that are held end with the same row. Parts are told by keys, which every database finds at once.
ColumnStore::Read ColumnStore::readOn(Part part) {
  std::vector<Column*> columns;
  for (const auto& column : reading_->columns) columns.push_back(column.get());
  const std::int64_t end = keys_ == nullptr ? kBehindAll : keys_->rows() == 0 ? kBeforeAll : keys_->last();
  const bool last = part == Part::Rest || reading_->lastKey <= reading_->readTo + reading_->stepKeys;
  const std::int64_t to = last ? end : std::min(end, reading_->readTo + reading_->stepKeys);
  ColumnSource::Read read;
  try {
    read = source_.readColumns(*definition_, reading_->fields, columns, reading_->readTo, to, *reading_->keys);
  } catch (...) {
    reading_.reset();  // some columns may have a row more than others
    throw;
  }
  if (!read.complete()) {
    refuse(reading_->fields[read.refused]);
    reading_.reset();
    return Read::Refused;
  }
  reading_->readTo = to;
  if (to != end) return Read::More;
  if (keys_ == nullptr) keys_ = std::move(reading_->keys);
  for (std::size_t i = 0; i < columns.size(); ++i) held_[reading_->fields[i]].column = std::move(reading_->columns[i]);
  reading_.reset();
  return Read::Complete;
}

// At least the number of rows, with those that were added since.
std::size_t ColumnStore::rowLimit() {
  std::int64_t rows = countRows();
  if (rows > 0 && keys_ != nullptr) rows += std::max<std::int64_t>(source_.rowLimit(*definition_) - keys_->last(), 0);
  return static_cast<std::size_t>(rows);
}

std::size_t ColumnStore::bytesNeeded(std::span<const std::size_t> fields) {
  const std::size_t rows = rowLimit();
  std::size_t needed = 0;
  for (const std::size_t field : fields) needed += rows * expectedBytes(definition_->fields[field].type);
  return needed;
}

// Columns not used for longest give way.
bool ColumnStore::makeRoom(std::span<const std::size_t> fields) {
  const std::size_t needed = bytesNeeded(fields);
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
  if (!reading_) return sum;
  for (const auto& column : reading_->columns) sum += column->bytes();
  return sum;
}

std::vector<const Column*> ColumnStore::columns() const {
  std::vector<const Column*> all;
  for (const Held& held : held_) all.push_back(held.column.get());
  return all;
}

}  // namespace jet::columns
