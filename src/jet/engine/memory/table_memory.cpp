#include "jet/engine/memory/table_memory.h"

#include <algorithm>

#include "base/text.h"
#include "jet/engine/memory/value_size.h"

namespace jet::memory {

namespace {

constexpr std::int64_t kMostRows = 65536;
constexpr std::size_t kMostBytes = std::size_t{16} << 20U;  // of one table
// One select on the database costs about as much as loading this many rows.
constexpr std::uint64_t kRowsPerSelect = 256;
// Reading 100,000 texts costs the database about a third of what indexing them does.
constexpr std::uint64_t kIndexAfter = 3;
constexpr std::uint64_t kOften = 16;
// A restless table that was asked this often without a change is so no more.
constexpr std::uint64_t kSettled = 8;
constexpr std::size_t kMostPackedBytes = std::size_t{24} << 20U;
constexpr std::size_t kMostColumns = 255;                      // of a packed row
constexpr std::size_t kMostTextBytes = std::size_t{8} << 20U;  // of one indexed column

}  // namespace

void TableMemory::refresh() {
  ++asked_;
  const std::uint64_t version = counters_.now();
  if (version_ == version) {
    if (!isRestless() || asked_ <= kSettled) return;
    restless_ = 0;
    measure();
    return;
  }
  restless_ = asked_ <= 2 ? restless_ + 1 : 0;
  forget();
  asked_ = 1;
  definition_ = source_.definition(name_);
  version_ = version;
  refused_ = true;
  if (!isRestless()) measure();
}

void TableMemory::measure() {
  const std::int64_t limit = definition_ ? source_.rowLimit(*definition_) : 0;
  refused_ = limit > kMostRows;
  loadAfter_ = eager_ ? 0 : static_cast<std::uint64_t>(limit) / kRowsPerSelect;
}

void TableMemory::forget() {
  eager_ = held_ && asked_ > loadAfter_ + held_->rows->rows().count / kRowsPerSelect;
  held_.reset();
  packed_.reset();
  packRefused_ = false;
  for (Texts& texts : texts_) {
    texts.eager = texts.index && texts.asked >= kOften;
    texts.refused = false;
    texts.asked = 0;
    texts.index.reset();
  }
}

IndexedRows* TableMemory::rows() {
  if (!held_ && !refused_ && asked_ > loadAfter_) load();
  return held_ ? held_->rows.get() : nullptr;
}

void TableMemory::load() {
  auto held = std::make_unique<Held>();
  std::size_t bytes = 0;
  std::size_t count = 0;
  bool fits = true;
  source_.readRows(*definition_, [&](const std::vector<Value>& row) {
    fits = keepRow(row, *held->cells, bytes);
    ++count;
    return fits;
  });
  refused_ = !fits;
  if (refused_) return;
  held->cells->shrink_to_fit();
  held->rows = std::make_unique<IndexedRows>(
      RowSet{.cells = held->cells->data(), .width = definition_->fields.size(), .count = count, .lender = held->cells});
  held_ = std::move(held);
  packed_.reset();
  // Their positions are others.
  for (Texts& texts : texts_) texts.index.reset();
}

// Foreign tools can store anything in a column.
bool TableMemory::hasColumnTypes(const std::vector<Value>& row) const {
  for (std::size_t i = 0; i < row.size(); ++i) {
    if (!row[i].isNull() && row[i].type() != definition_->fields[i].type) return false;
  }
  return true;
}

bool TableMemory::keepRow(const std::vector<Value>& row, std::vector<Value>& cells, std::size_t& bytes) const {
  for (const Value& cell : row) bytes += bytesOf(cell);
  if (bytes > kMostBytes || !hasColumnTypes(row)) return false;
  cells.insert(cells.end(), row.begin(), row.end());
  return true;
}

void TableMemory::pack() {
  auto packed = std::make_unique<PackedRows>();
  packRefused_ = definition_->fields.size() > kMostColumns;
  if (packRefused_) return;
  source_.readRows(*definition_, [&](const std::vector<Value>& row) {
    packed->add(row);
    packRefused_ = packed->bytes() > kMostPackedBytes || !hasColumnTypes(row);
    return !packRefused_;
  });
  if (packRefused_) return;
  packed->finish();
  packed_ = std::move(packed);
}

TableMemory::Texts& TableMemory::textsOf(std::size_t column) {
  const auto found =
      std::find_if(texts_.begin(), texts_.end(), [column](const Texts& texts) { return texts.column == column; });
  if (found != texts_.end()) return *found;
  texts_.emplace_back();
  texts_.back().column = column;
  return texts_.back();
}

const ContainsIndex* TableMemory::texts(std::size_t column) {
  Texts& texts = textsOf(column);
  ++texts.asked;
  if (!texts.index && !texts.refused && (texts.eager || texts.asked > kIndexAfter)) build(texts);
  return texts.index.get();
}

void TableMemory::build(Texts& texts) {
  if (!held_ && !packed_ && !packRefused_) pack();
  auto index = std::make_unique<ContainsIndex>();
  std::size_t bytes = 0;
  const auto add = [&](std::int64_t key, std::string_view text) {
    bytes += text.size();
    if (bytes > kMostTextBytes) return false;
    index->add(key, base::fold(text));
    return true;
  };
  if (held_) {
    const RowSet& rows = held_->rows->rows();
    for (std::size_t i = 0; i < rows.count; ++i) {
      const Value& cell = rows.row(i)[texts.column];
      if (!cell.isNull() && !add(static_cast<std::int64_t>(i), cell.text())) break;
    }
  } else if (packed_) {
    for (std::size_t i = 0; i < packed_->count(); ++i) {
      const auto text = packed_->text(i, texts.column);
      if (text && !add(static_cast<std::int64_t>(i), *text)) break;
    }
  } else {
    source_.readTexts(*definition_, definition_->fields[texts.column], add);
  }
  texts.refused = bytes > kMostTextBytes;
  texts.asked = 0;
  if (texts.refused) return;
  index->finish();
  texts.index = std::move(index);
}

}  // namespace jet::memory
