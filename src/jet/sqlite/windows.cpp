#include "jet/sqlite/windows.h"

#include <algorithm>

namespace jet::sqlite {

KeyedWindow::KeyedWindow(SqliteDatabase& database, ShapedText text) : database_(database), text_(std::move(text)) {
  database_.statements().open(Role::OrderedKeys, text_);
  const Execution read = database_.statements().open(Role::Read, text_, nullptr, {0});
  columns_ = read.plan().columns;
  ordered_ = !read.statement().orderBy.empty();
}

void KeyedWindow::refresh() {
  database_.versions().refresh();
  count_.reset();
}

std::int64_t KeyedWindow::rowCount() {
  if (!count_) {
    Execution count = database_.statements().open(Role::Count, text_);
    count.step();
    count_ = count.key();
  }
  return *count_;
}

// Skipping costs time for each row skipped, so the second half of the list is reached from its end. The first rows are
// read without counting any.
std::vector<std::int64_t> KeyedWindow::keys(std::int64_t first, std::int64_t count) {
  std::vector<std::int64_t> keys;
  const bool back = first > 0 && first > rowCount() / 2;
  if (back) {
    count = std::min(count, rowCount() - first);
    if (count <= 0) return keys;
  }
  const std::int64_t skip = back ? rowCount() - first - count : first;
  Execution page =
      database_.statements().open(back ? Role::KeysPageBack : Role::KeysPage, text_, nullptr, {count, skip});
  while (page.step()) keys.push_back(page.key());
  if (back) std::reverse(keys.begin(), keys.end());
  return keys;
}

Snapshot KeyedWindow::rows(std::int64_t first, std::int64_t count) {
  auto table = std::make_shared<ResultTable>();
  table->columns = columns_;
  if (first >= 0 && count > 0) {
    for (const std::int64_t key : keys(first, count)) {
      Execution read = database_.statements().open(Role::Read, text_, nullptr, {key});
      const bool exists = read.step();
      // A row deleted since keeps its place, empty, until the next refresh.
      for (std::size_t i = 0; i < columns_.size(); ++i) {
        table->cells.push_back(exists && i < read.plan().columns.size() ? read.value(i, 1) : Value());
      }
      ++table->rows;
    }
  }
  return Snapshot(std::move(table));
}

std::optional<std::int64_t> KeyedWindow::find(std::string_view criteria) {
  const ShapedText shaped(criteria);
  std::int64_t key = 0;
  {
    Execution find = database_.statements().open(Role::FindFirst, text_, &shaped);
    if (!find.step()) return std::nullopt;
    key = find.key();
  }
  if (!ordered_) {
    Execution before = database_.statements().open(Role::CountBefore, text_, nullptr, {key});
    before.step();
    return before.key();
  }
  Execution keys = database_.statements().open(Role::OrderedKeys, text_);
  for (std::int64_t position = 0; keys.step(); ++position) {
    if (keys.key() == key) return position;
  }
  return std::nullopt;
}

ResultWindow::ResultWindow(SqliteDatabase& database, ShapedText text) : database_(database), text_(std::move(text)) {
  columns_ = database_.statements().open(Role::Run, text_).plan().columns;
}

void ResultWindow::load() {
  if (loaded_) return;
  snapshot_ = database_.openSnapshot(text_.text);
  loaded_ = true;
}

std::int64_t ResultWindow::rowCount() {
  load();
  return static_cast<std::int64_t>(snapshot_.rowCount());
}

Snapshot ResultWindow::rows(std::int64_t first, std::int64_t count) {
  auto table = std::make_shared<ResultTable>();
  table->columns = columns_;
  const std::int64_t end = std::min(rowCount(), first + std::max<std::int64_t>(count, 0));
  for (std::int64_t row = std::max<std::int64_t>(first, 0); row < end; ++row) {
    for (std::size_t i = 0; i < columns_.size(); ++i) {
      table->cells.push_back(snapshot_.at(static_cast<std::size_t>(row), i));
    }
    ++table->rows;
  }
  return Snapshot(std::move(table));
}

std::optional<std::int64_t> ResultWindow::find(std::string_view criteria) {
  load();
  const ShapedText shaped(criteria);
  Execution flags = database_.statements().open(Role::Flags, text_, &shaped);
  for (std::int64_t row = 0; row < rowCount() && flags.step(); ++row) {
    if (sqlite3_column_double(flags.raw(), 0) != 0) return row;
  }
  return std::nullopt;
}

}  // namespace jet::sqlite
