#pragma once

#include <string>
#include <string_view>

#include "jet/engine/driver.h"
#include "jet/sqlite/catalog.h"
#include "jet/sqlite/connection.h"
#include "jet/sqlite/plain_columns.h"
#include "jet/sqlite/plan.h"

namespace jet::sqlite {

class SqliteQuery final : public engine::Query {
 public:
  // `keyColumns` come before the items: 0 or 1. `catalog` is told of a definition that the query changes; null for
  // other queries.
  SqliteQuery(Connection& connection, PlainColumns& plainColumns, Plan plan, int keyColumns, std::string_view text,
              Catalog* catalog = nullptr);

  void bind(const engine::Arguments& arguments) override;
  // For scans, whose plan has no bindings.
  void bindExtras(std::int64_t first, std::int64_t second);
  bool step() override;
  [[nodiscard]] engine::RowKey key() const override { return sqlite3_column_int64(statement_.get(), 0); }
  [[nodiscard]] engine::Cell cell(std::size_t item) const override;
  [[nodiscard]] std::int64_t changed() const override { return changed_; }
  [[nodiscard]] std::int64_t work() const override;
  void reset() noexcept override;
  [[nodiscard]] bool usable() override;

 private:
  Connection& connection_;
  PlainColumns& plainColumns_;
  Plan plan_;
  int keyColumns_;
  std::string text_;
  Catalog* catalog_;
  StatementHandle statement_;
  std::int64_t changed_ = 0;
};

class SqliteRowChange final : public engine::RowChange {
 public:
  enum class Kind { Insert, Update, Remove };
  // Parameter ?1 is the key of Update and Remove; those of the values follow it, or come first.
  SqliteRowChange(Connection& connection, Kind kind, const std::string& sql);

  std::int64_t run(engine::RowKey key, std::span<const Value* const> values) override;

 private:
  Connection& connection_;
  Kind kind_;
  StatementHandle statement_;
};

}  // namespace jet::sqlite
