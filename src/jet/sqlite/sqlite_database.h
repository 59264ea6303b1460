#pragma once

#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "jet/columns/statistics.h"
#include "jet/database.h"
#include "jet/memory/query_memory.h"
#include "jet/sqlite/catalog.h"
#include "jet/sqlite/column_reader.h"
#include "jet/sqlite/connection.h"
#include "jet/sqlite/memory_source.h"
#include "jet/sqlite/statement_cache.h"
#include "jet/sqlite/versions.h"

namespace jet::sqlite {

class SqliteDatabase final : public Database {
 public:
  SqliteDatabase(const std::filesystem::path& path, OpenMode mode, bool create);
  ~SqliteDatabase() override;

  [[nodiscard]] const std::filesystem::path& path() const override { return connection_.path(); }
  [[nodiscard]] bool readOnly() const override { return connection_.readOnly(); }

  std::int64_t execute(std::string_view sql) override;
  std::unique_ptr<Recordset> openRecordset(std::string_view sql) override;
  Snapshot openSnapshot(std::string_view sql) override;
  std::unique_ptr<RowWindow> openWindow(std::string_view sql) override;
  void forEachRow(std::string_view sql, const std::function<bool(const std::vector<Value>&)>& row) override;

  TableDef tableDef(std::string_view table) override;
  std::vector<std::string> tableNames() override;
  void createTable(const TableDef& table) override;
  std::uint64_t tableVersion(std::string_view table) override { return versions_.of(table); }
  void makeDurable() override { connection_.makeDurable(); }
  void watch(std::function<bool()> watcher) override;

  // For the recordsets and windows of this folder.
  Connection& connection() { return connection_; }
  Catalog& catalog() { return catalog_; }
  Versions& versions() { return versions_; }
  StatementCache& statements() { return statements_; }
  // Runs a select on the file and keeps its rows; with keys (at most kAmongKeys), over the rows of those alone.
  std::shared_ptr<const ResultTable> runSelect(const ShapedText& text, std::span<const std::int64_t> keys = {});
  // The rows of a select that is a statistic; null for every other. Error 3065 for a text that changes something.
  std::shared_ptr<const columns::StatisticRows> statistic(const ShapedText& text);
  columns::Statistics& statistics() { return statistics_; }
  // At least the number of rows of a table; does not read them.
  std::int64_t rowLimit(const TableDef& table);
  // Throws 3027 when the file is open for reading only, and when the transaction that the caller believes to be in was
  // undone by a fault (a full disk): going on would write outside of it.
  void requireWritable(std::string_view statement);
  // A number for the name of a temporary table.
  int nextTemporary() { return ++temporaries_; }

 protected:
  void begin() override;
  void commit() override;
  void rollback() noexcept override;
  void beginReadView() override;
  void endReadView() noexcept override { versions_.release(); }

 private:
  // A select, checked; Error 3065 for a text that changes something.
  std::shared_ptr<const CachedQuery> parsedSelect(const ShapedText& text);
  static int callWatcher(void* self);

  Connection connection_;
  Catalog catalog_;
  Versions versions_;
  StatementCache statements_;
  MemorySource memorySource_;
  memory::QueryMemory memory_;
  std::function<bool()> watcher_;
  ColumnReader columnReader_;
  columns::Statistics statistics_;
  int depth_ = 0;  // of transactions
  int temporaries_ = 0;
};

}  // namespace jet::sqlite
