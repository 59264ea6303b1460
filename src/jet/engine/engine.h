#pragma once

#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "jet/database.h"
#include "jet/engine/column_reader.h"
#include "jet/engine/columns/statistics.h"
#include "jet/engine/driver.h"
#include "jet/engine/memory/query_memory.h"
#include "jet/engine/memory_source.h"
#include "jet/engine/statement_cache.h"
#include "jet/engine/versions.h"

namespace jet::engine {

// The database layer over a driver: everything but what a driver must do.
class Engine final : public Database {
 public:
  Engine(std::unique_ptr<Driver> driver, std::filesystem::path path);
  ~Engine() override;

  [[nodiscard]] const std::filesystem::path& path() const override { return path_; }
  [[nodiscard]] bool readOnly() const override { return driver_->readOnly(); }
  [[nodiscard]] bool connected() const override { return driver_->connected(); }
  bool reconnect() override;
  std::string transactionName() override { return driver_->transactionName(); }
  bool committed(const std::string& transaction) override { return driver_->committed(transaction); }

  std::int64_t execute(std::string_view sql) override;
  std::unique_ptr<Recordset> openRecordset(std::string_view sql) override;
  Snapshot openSnapshot(std::string_view sql) override;
  Snapshot openSnapshot(PreparedSelect& select, std::span<const base::FormatArgument> values) override;
  std::unique_ptr<RowWindow> openWindow(std::string_view sql) override;
  void forEachRow(std::string_view sql, const std::function<bool(const std::vector<Value>&)>& row) override;
  bool readAhead(std::string_view sql, std::chrono::milliseconds time, std::int64_t mostRows) override;

  bool looksForPlaces() override { return driver_->looksForPlaces(); }
  bool makesIndexes() override { return driver_->makesIndexes(); }

  TableDef tableDef(std::string_view table) override;
  std::vector<std::string> tableNames() override { return driver_->tableNames(); }
  void createTable(const TableDef& table) override;
  void upgradeTable(const TableDef& table) override;
  std::uint64_t tableVersion(std::string_view table) override { return versions_.of(table); }
  void makeDurable() override { driver_->makeDurable(); }
  std::vector<TableRows> copyTo(const std::filesystem::path& file) override { return driver_->copyTo(file); }
  std::vector<std::string> damage() override { return driver_->damage(); }
  void watch(std::function<bool()> watcher) override;
  void setMasks(MasksPtr masks) override;
  [[nodiscard]] const MasksPtr& masks() const override { return masks_; }

  // For the recordsets and windows of this folder.
  Driver& driver() { return *driver_; }
  Versions& versions() { return versions_; }
  StatementCache& statements() { return statements_; }
  // Runs a select on the database and keeps its rows; with keys (at most kAmongKeys), over the rows of those alone.
  std::shared_ptr<const ResultTable> runSelect(const ShapedText& text, std::span<const RowKey> keys = {});
  // The rows of a select that is a statistic; null for every other. Error 3065 for a text that changes something.
  std::shared_ptr<const columns::StatisticRows> statistic(const ShapedText& text);
  columns::Statistics& statistics() { return statistics_; }
  // Throws 3027 when the database is open for reading only, and when the transaction that the caller believes to be in
  // was undone by a fault (a full disk): going on would write outside of it.
  void requireWritable(std::string_view statement);

 protected:
  void begin() override;
  void commit() override;
  void rollback() noexcept override;
  void beginReadView() override;
  void endReadView() noexcept override { versions_.release(); }
  void beginAsStored() override { ++asStored_; }
  void endAsStored() noexcept override { --asStored_; }

 private:
  // Answers from memory under masks, apart from those without.
  struct MaskedMemory {
    MaskedMemory(Engine& engine, const MasksPtr& masks) : source(engine, masks), memory(source) {}
    MemorySource source;
    memory::QueryMemory memory;
  };

  // What a select that is opened now is run under, and answered from.
  [[nodiscard]] const MasksPtr& masksNow() const;
  memory::QueryMemory& memoryNow() { return masksNow() ? maskedMemory_->memory : memory_; }
  // A select, bound; Error 3065 for a text that changes something.
  BoundQueryPtr boundSelect(const ShapedText& text);

  std::unique_ptr<Driver> driver_;
  std::filesystem::path path_;
  Versions versions_;
  StatementCache statements_;
  MemorySource memorySource_;
  memory::QueryMemory memory_;
  ColumnReader columnReader_;
  columns::Statistics statistics_;
  int depth_ = 0;  // of transactions
  MasksPtr masks_;
  std::unique_ptr<MaskedMemory> maskedMemory_;  // while there are masks
  int asStored_ = 0;                            // depth
};

}  // namespace jet::engine
