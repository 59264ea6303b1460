#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "jet/engine/driver.h"
#include "jet/postgres/catalog.h"
#include "jet/postgres/plan.h"
#include "jet/postgres/rows.h"
#include "jet/postgres/session.h"

namespace jet::postgres {

class PostgresSelect final : public engine::Query {
 public:
  // `keyColumns` stand before the items: 0 or 1. With `many`, there may be more rows than fit into memory.
  PostgresSelect(Session& session, Plan plan, std::size_t keyColumns, bool many, std::string_view text);
  ~PostgresSelect() override;

  void bind(const engine::Arguments& arguments) override;
  bool step() override;
  [[nodiscard]] engine::RowKey key() const override { return rows_.integer(0); }
  [[nodiscard]] engine::Cell cell(std::size_t item) const override { return rows_.cell(item + keyColumns_); }
  [[nodiscard]] std::int64_t changed() const override { return 0; }
  [[nodiscard]] std::int64_t work() const override;
  void reset() noexcept override;
  [[nodiscard]] bool usable() override { return true; }

 private:
  Session& session_;
  Plan plan_;
  std::size_t keyColumns_;
  bool many_;
  std::string text_;
  Prepared prepared_;
  Parameters parameters_;
  Rows rows_;
  bool started_ = false;
};

// A changing statement.
class PostgresChange final : public engine::Query {
 public:
  // `before` goes first in the same transaction, `after` follows it; `catalog` is told of a definition that the
  // statement changes, null for others.
  struct Around {
    std::vector<std::string> before;
    std::vector<std::string> after;
    Catalog* catalog = nullptr;
  };
  PostgresChange(Session& session, Plan plan, std::string_view text, Around around);
  ~PostgresChange() override;

  void bind(const engine::Arguments& arguments) override;
  bool step() override;
  [[nodiscard]] engine::RowKey key() const override { return 0; }
  [[nodiscard]] engine::Cell cell(std::size_t) const override { return {}; }
  [[nodiscard]] std::int64_t changed() const override { return changed_; }
  [[nodiscard]] std::int64_t work() const override { return 0; }
  void reset() noexcept override {}
  [[nodiscard]] bool usable() override { return true; }

 private:
  Session& session_;
  Plan plan_;
  std::string text_;
  Around around_;
  Prepared prepared_;
  Parameters parameters_;
  std::int64_t changed_ = 0;
};

// An update or a removal: parameter $1 is the key, those of the values follow it.
class PostgresRowChange final : public engine::RowChange {
 public:
  PostgresRowChange(Session& session, std::string sql, std::vector<Type> types);
  ~PostgresRowChange() override;

  std::int64_t run(engine::RowKey key, std::span<const Value* const> values) override;

 private:
  Session& session_;
  Prepared prepared_;
  std::vector<Type> types_;
  Parameters parameters_;
};

class PostgresInsert final : public engine::RowChange {
 public:
  // Both statements give the key: `numbered`, without the auto-increment column, and `withKey`, of all fields, for a
  // row whose `keyValue` among the values is not Null; `afterOwnKey` then follows.
  PostgresInsert(Session& session, std::string numbered, std::string withKey, std::vector<Type> types,
                 std::optional<std::size_t> keyValue, std::vector<std::string> afterOwnKey);
  ~PostgresInsert() override;

  std::int64_t run(engine::RowKey key, std::span<const Value* const> values) override;

 private:
  Session& session_;
  Prepared numbered_;
  Prepared withKey_;
  std::vector<Type> types_;
  std::optional<std::size_t> keyValue_;
  std::vector<std::string> afterOwnKey_;
  Parameters parameters_;
};

}  // namespace jet::postgres
