#pragma once

#include <map>
#include <optional>

#include "jet/row_window.h"
#include "jet/sqlite/sqlite_database.h"

namespace jet::sqlite {

// A window over rows of one table: keys are found by position, rows by key. Where the file has no order for them, or a
// condition picks few from many, the keys are ordered by columns in memory, else they are fetched, and memory does not
// grow.
class KeyedWindow final : public RowWindow {
 public:
  KeyedWindow(SqliteDatabase& database, ShapedText text);

  [[nodiscard]] const std::vector<std::string>& columns() const override { return columns_; }
  std::int64_t rowCount() override;
  Snapshot rows(std::int64_t first, std::int64_t count) override;
  std::optional<std::int64_t> find(std::string_view criteria) override;
  void refresh() override;

 private:
  struct Anchor {
    std::int64_t position;
    std::int64_t key;
  };

  std::vector<std::int64_t> keys(std::int64_t first, std::int64_t count);
  std::vector<std::int64_t> fetchKeys(std::int64_t first, std::int64_t count);
  const columns::KeyOrder* order();
  std::optional<std::vector<std::int64_t>> keysByAnchor(std::int64_t first, std::int64_t count);
  std::vector<std::int64_t> run(Role role, std::initializer_list<std::int64_t> extras);
  void keepAnchor(std::int64_t position, std::int64_t key);

  SqliteDatabase& database_;
  ShapedText text_;
  std::shared_ptr<const CachedQuery> query_;
  std::size_t orderItems_;
  std::vector<std::string> columns_;
  // Of this refresh:
  std::optional<std::shared_ptr<const columns::KeyOrder>> order_;  // null: the keys are fetched
  std::optional<std::int64_t> count_;
  std::map<std::int64_t, Anchor> anchors_;  // by position / kAnchorSpacing
};

// A window over a select that groups, joins or drops duplicates: its rows are worked out once for each refresh. Those
// of a statistic are kept as sums, others, and for find() all, in a temporary table on disk, since there may be as many
// groups as rows.
class ResultWindow final : public RowWindow {
 public:
  ResultWindow(SqliteDatabase& database, ShapedText text);
  ~ResultWindow() override;

  [[nodiscard]] const std::vector<std::string>& columns() const override { return columns_; }
  std::int64_t rowCount() override;
  Snapshot rows(std::int64_t first, std::int64_t count) override;
  std::optional<std::int64_t> find(std::string_view criteria) override;
  void refresh() override;

 private:
  void load();
  void fillTable();
  std::int64_t copySelect(sqlite3_stmt* insert);
  std::int64_t copyStatistic(sqlite3_stmt* insert);

  SqliteDatabase& database_;
  ShapedText text_;
  std::vector<std::string> columns_;
  std::vector<Type> types_;
  std::string table_;       // of temp; columns c0, c1, ...; row ids count from 1
  std::string columnList_;  // "c0, c1, ..."
  bool made_ = false;
  // Of this refresh:
  std::shared_ptr<const columns::StatisticRows> statistic_;
  bool filled_ = false;  // the table
  std::optional<std::int64_t> count_;
};

}  // namespace jet::sqlite
