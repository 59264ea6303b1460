#pragma once

#include <filesystem>

#include "jet/engine/driver.h"
#include "jet/sqlite/catalog.h"
#include "jet/sqlite/connection.h"
#include "jet/sqlite/plain_columns.h"

namespace jet::sqlite {

// Name and version of the library.
std::string library();

class SqliteDriver final : public engine::Driver {
 public:
  SqliteDriver(const std::filesystem::path& path, OpenMode mode, bool create);

  [[nodiscard]] bool readOnly() const override { return connection_.readOnly(); }
  [[nodiscard]] std::string describe() const override { return connection_.path().string(); }

  bind::TableDefPtr definition(std::string_view table) override { return catalog_.find(table); }
  std::vector<std::string> tableNames() override { return catalog_.names(); }
  void createTable(const TableDef& table) override;
  void upgradeTable(const TableDef& table) override;
  [[nodiscard]] std::uint64_t generation() const override { return catalog_.generation(); }

  std::unique_ptr<engine::Query> prepare(const engine::QueryRequest& request) override;
  std::unique_ptr<engine::Query> scan(const TableDef& table, std::span<const std::size_t> fields,
                                      engine::KeyRange range) override;
  std::unique_ptr<engine::RowChange> prepareInsert(const TableDef& table, std::span<const std::size_t> fields) override;
  std::unique_ptr<engine::RowChange> prepareUpdate(const TableDef& table, std::span<const std::size_t> fields) override;
  std::unique_ptr<engine::RowChange> prepareRemove(const TableDef& table) override;

  std::int64_t rowLimit(const TableDef& table) override;
  engine::Extent extent(const TableDef& table) override;
  bool readsInOrder(const TableDef& table, std::size_t field) override;

  void begin() override { connection_.run("BEGIN IMMEDIATE"); }
  void commit() override { connection_.run("COMMIT"); }
  void rollback() noexcept override;
  void savepoint(int level) override;
  void release(int level) override;
  void rollbackTo(int level) noexcept override;
  [[nodiscard]] bool inTransaction() const override;
  void beginView() override { connection_.run("SAVEPOINT jet_view"); }
  void endView() noexcept override { attempt("RELEASE jet_view"); }

  void lookForChanges(engine::ChangeListener& listener, bool closely) override;
  void makeDurable() override { connection_.makeDurable(); }
  std::vector<TableRows> copyTo(const std::filesystem::path& file) override;
  std::vector<std::string> damage() override;
  void watch(std::function<bool()> watcher) override;

 private:
  // Without a report of faults.
  void attempt(const std::string& sql) noexcept;
  std::int64_t read(sqlite3_stmt* pragma);
  static int callWatcher(void* self);

  Connection connection_;
  Catalog catalog_;
  PlainColumns plainColumns_;
  std::function<bool()> watcher_;
  StatementHandle dataVersion_;
  StatementHandle schemaVersion_;
  std::int64_t lastData_ = 0;
  std::int64_t lastSchema_ = 0;
};

}  // namespace jet::sqlite
