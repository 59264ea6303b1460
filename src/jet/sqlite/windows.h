#pragma once

#include <optional>

#include "jet/row_window.h"
#include "jet/sqlite/sqlite_database.h"

namespace jet::sqlite {

// A window over rows of one table: keys are fetched by position, rows by key, so memory does not grow.
class KeyedWindow final : public RowWindow {
 public:
  KeyedWindow(SqliteDatabase& database, ShapedText text);

  [[nodiscard]] const std::vector<std::string>& columns() const override { return columns_; }
  std::int64_t rowCount() override;
  Snapshot rows(std::int64_t first, std::int64_t count) override;
  std::optional<std::int64_t> find(std::string_view criteria) override;
  void refresh() override;

 private:
  std::vector<std::int64_t> keys(std::int64_t first, std::int64_t count);

  SqliteDatabase& database_;
  ShapedText text_;
  bool ordered_;
  std::vector<std::string> columns_;
  std::optional<std::int64_t> count_;
};

// A window over a select that groups, joins or drops duplicates: its rows are worked out once for each refresh.
class ResultWindow final : public RowWindow {
 public:
  ResultWindow(SqliteDatabase& database, ShapedText text);

  [[nodiscard]] const std::vector<std::string>& columns() const override { return columns_; }
  std::int64_t rowCount() override;
  Snapshot rows(std::int64_t first, std::int64_t count) override;
  std::optional<std::int64_t> find(std::string_view criteria) override;
  void refresh() override { loaded_ = false; }

 private:
  void load();

  SqliteDatabase& database_;
  ShapedText text_;
  std::vector<std::string> columns_;
  bool loaded_ = false;
  Snapshot snapshot_;
};

}  // namespace jet::sqlite
