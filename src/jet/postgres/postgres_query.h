#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "jet/engine/driver.h"
#include "jet/postgres/bulk_insert.h"
#include "jet/postgres/catalog.h"
#include "jet/postgres/plan.h"
#include "jet/postgres/rows.h"
#include "jet/postgres/session.h"

namespace jet::postgres {

// What is prepared may outlive the database (a recordset that is let go of last), and keeps the session until then.

// The values of a run of the plan.
void addParameters(Parameters& parameters, const Plan& plan, const engine::Arguments& arguments);

class PostgresSelect final : public engine::Query {
 public:
  // `keyColumns` come before the items: 0 or 1. With `many`, there may be more rows than fit into memory.
  PostgresSelect(std::shared_ptr<Session> session, Plan plan, std::size_t keyColumns, bool many, std::string_view text);
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
  std::shared_ptr<Session> session_;
  Plan plan_;
  std::size_t keyColumns_;
  bool many_;
  std::string text_;
  Prepared prepared_;
  Parameters parameters_;
  Rows rows_;
  bool started_ = false;
};

// Rows of a table by COPY, which costs the least for each of them.
class PostgresScan final : public engine::Query {
 public:
  // `copyStatement` gives the key and fields of `types`, in the server's binary form.
  PostgresScan(std::shared_ptr<Session> session, const std::string& copyStatement, const std::vector<Type>& types);

  void bind(const engine::Arguments&) override {}
  bool step() override { return rows_.next(); }
  [[nodiscard]] engine::RowKey key() const override { return rows_.integer(0); }
  [[nodiscard]] engine::Cell cell(std::size_t item) const override { return rows_.cell(item + 1); }
  [[nodiscard]] std::int64_t changed() const override { return 0; }
  [[nodiscard]] std::int64_t work() const override { return rows_.count(); }
  void reset() noexcept override { rows_.end(); }
  [[nodiscard]] bool usable() override { return true; }

 private:
  std::shared_ptr<Session> session_;
  Rows rows_;
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
  PostgresChange(std::shared_ptr<Session> session, Plan plan, std::string_view text, Around around);
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
  std::shared_ptr<Session> session_;
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
  PostgresRowChange(std::shared_ptr<Session> session, std::string sql, std::vector<Type> types);
  ~PostgresRowChange() override;

  std::int64_t run(engine::RowKey key, std::span<const Value* const> values) override;

 private:
  std::shared_ptr<Session> session_;
  Prepared prepared_;
  std::vector<Type> types_;
  Parameters parameters_;
};

// Rows that follow one another within a transaction go by COPY, numbered here: no one else can take a number.
class PostgresInsert final : public engine::RowChange {
 public:
  // Both statements give the key: `numbered`, without the auto-increment column, and `withKey`, of all fields, for a
  // row whose `keyValue` among the values is not Null; `afterOwnKey` then follows. `types` are those of all fields.
  PostgresInsert(std::shared_ptr<Session> session, std::string numbered, std::string withKey, std::vector<Type> types,
                 std::optional<std::size_t> keyValue, std::vector<std::string> afterOwnKey,
                 std::unique_ptr<BulkInsert> bulk);
  ~PostgresInsert() override;

  std::int64_t run(engine::RowKey key, std::span<const Value* const> values) override;

 private:
  void insert(bool ownKey, std::span<const Value* const> values);

  std::shared_ptr<Session> session_;
  Prepared numbered_;
  Prepared withKey_;
  std::vector<Type> types_;
  std::optional<std::size_t> keyValue_;
  std::vector<std::string> afterOwnKey_;
  std::unique_ptr<BulkInsert> bulk_;  // null for a table whose rows may be refused
  Parameters parameters_;
  std::vector<const Value*> values_;  // without the key
  engine::RowKey lastKey_ = 0;
  std::uint64_t runs_ = 0;  // of the connection, when that row was added
};

}  // namespace jet::postgres
