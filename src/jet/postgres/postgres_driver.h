#pragma once

#include "jet/engine/driver.h"
#include "jet/postgres/bulk_insert.h"
#include "jet/postgres/catalog.h"
#include "jet/postgres/index_maker.h"
#include "jet/postgres/ladders.h"
#include "jet/postgres/session.h"

namespace jet::postgres {

// Name and version of the library.
std::string library();

class PostgresDriver final : public engine::Driver {
 public:
  // Errors as of jet::openDatabase(), and 3151 when there is no server. With `create`, makes the schema: 3204 when it
  // exists.
  PostgresDriver(const Address& address, OpenMode mode, bool create);

  [[nodiscard]] bool readOnly() const override { return session_->connection().readOnly(); }
  [[nodiscard]] bool connected() const override { return !session_->connection().lost(); }
  bool reconnect() override;
  std::string transactionName() override { return session_->transactionName(); }
  bool committed(const std::string& transaction) override { return session_->committed(transaction); }
  [[nodiscard]] std::string describe() const override { return session_->connection().describe(); }

  bind::TableDefPtr definition(std::string_view table) override { return catalog_.find(table); }
  std::vector<std::string> tableNames() override { return catalog_.names(); }
  void createTable(const TableDef& table) override;
  void upgradeTable(const TableDef& table) override;
  [[nodiscard]] bool makesIndexes() override { return indexes_.isMaking(); }
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
  std::optional<engine::Place> placeBefore(const engine::QueryRequest& request, const engine::Arguments& arguments,
                                           std::int64_t position) override {
    return ladders_.placeBefore(request, arguments, position);
  }
  std::optional<std::int64_t> positionOf(const engine::QueryRequest& request, const engine::Arguments& arguments,
                                         engine::RowKey key) override {
    return ladders_.positionOf(request, arguments, key);
  }
  [[nodiscard]] bool looksForPlaces() override { return ladders_.isMaking(); }
  [[nodiscard]] bool isServer() const override { return true; }

  void begin() override { session_->begin(); }
  void commit() override { session_->commit(); }
  void rollback() noexcept override;
  void savepoint(int level) override { session_->savepoint(level); }
  void release(int level) override { session_->release(level); }
  void rollbackTo(int level) noexcept override;
  [[nodiscard]] bool inTransaction() const override { return session_->inTransaction(); }
  void beginView() override { session_->beginView(); }
  void endView() noexcept override { session_->endView(); }

  void lookForChanges(engine::ChangeListener& listener, bool closely) override;
  // A commit waits for the disk already, unless the server was told not to.
  void makeDurable() override {}
  std::vector<TableRows> copyTo(const std::filesystem::path& file) override;
  std::vector<std::string> damage() override;
  void watch(std::function<bool()> watcher) override { session_->connection().watch(std::move(watcher)); }
  [[nodiscard]] bool silent() const override { return session_->connection().silent(); }

 private:
  void makeSchema();
  int functionVersion();
  void makeFunctions();
  void renewFunctions();
  void adaptToName();
  // Of what only the owner may do.
  void changeAsOwner(const std::vector<std::string>& statements, bool alone);
  void requireRights();
  [[nodiscard]] const std::string& schema() const { return session_->connection().address().schema(); }
  [[nodiscard]] bool isOwnerOf(const TableDef& table);
  // Whether "jet orders" knows of the fields.
  [[nodiscard]] bool areOrdersNoted(const TableDef& table, const std::vector<IndexDef>& indexes);
  void addOrders(const TableDef& table, const std::vector<IndexDef>& missing);
  std::unique_ptr<BulkInsert> bulkInsert(const TableDef& table, std::span<const std::size_t> fields);
  // Moves the numbering of a table after a row that brought its own number.
  [[nodiscard]] std::vector<std::string> afterOwnKey(const TableDef& table) const;

  std::shared_ptr<Session> session_;
  Catalog catalog_;
  Ladders ladders_{session_};
  IndexMaker indexes_{session_};
  int functions_ = 0;  // their version in the server
};

}  // namespace jet::postgres
