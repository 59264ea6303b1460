#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/printf.h"
#include "jet/error.h"
#include "jet/masks.h"
#include "jet/recordset.h"
#include "jet/row_window.h"
#include "jet/snapshot.h"
#include "jet/table_def.h"
#include "jet/table_rows.h"

namespace jet {

class PreparedSelect;

enum class OpenMode { ReadWrite, ReadOnly };

// An open database: a file, or a schema on a PostgreSQL server. Statements are texts of the Jet SQL dialect, one a
// text; they are parsed, checked against the closed grammar and function list, and only then run. A Database belongs to
// one thread at a time; several copies, in one process or in many, may have the same file open.
class Database {
 public:
  virtual ~Database() = default;

  [[nodiscard]] virtual const std::filesystem::path& path() const = 0;
  [[nodiscard]] virtual bool readOnly() const = 0;

  // Of a database on a server. False once the connection was lost (Error 3151): everything throws that from then on,
  // until reconnect() gave true. Costs nothing.
  [[nodiscard]] virtual bool connected() const = 0;
  // Outside of transactions. Connects again where the connection is lost, noticed or not; false while the server cannot
  // be reached. Recordsets and windows from
  // before have to be opened again. Throws Error when the server answers and refuses.
  virtual bool reconnect() = 0;
  // Within a Transaction on a server: a name to ask for below when the connection is lost in its commit(), in this run
  // of the program or a later one. Empty for a file.
  [[nodiscard]] virtual std::string transactionName() = 0;
  // Outside of transactions: whether the server committed the transaction of that name; false when it knows none such.
  // Throws Error, 3260 when it is still at it after some seconds.
  [[nodiscard]] virtual bool committed(const std::string& transaction) = 0;

  // Runs a changing statement; the result is the number of rows changed. A fault undoes the whole statement.
  virtual std::int64_t execute(std::string_view sql) = 0;
  // A dynaset over a select.
  virtual std::unique_ptr<Recordset> openRecordset(std::string_view sql) = 0;
  // The finished rows of a select. May be answered from memory: the answer is the one that the select would give now,
  // and a change by this or another copy is seen by the next call (within a ReadView: by the next view). Of a change by
  // a copy on another machine, the next ReadView and Transaction know at once, other calls some milliseconds later.
  virtual Snapshot openSnapshot(std::string_view sql) = 0;
  // The same for a select that is run often, with the values of this run.
  virtual Snapshot openSnapshot(PreparedSelect& select, std::span<const base::FormatArgument> values) = 0;
  // The rows of a select as a scrollable list.
  virtual std::unique_ptr<RowWindow> openWindow(std::string_view sql) = 0;
  // Hands every row of a select to `row` as it is read, without keeping any; `row` returns false to stop.
  virtual void forEachRow(std::string_view sql, const std::function<bool(const std::vector<Value>&)>& row) = 0;

  // Reads on, for about `time`, what makes the rows and the number of rows of this select, or of others over the same
  // columns, quick to find; it does so in memory that is bounded. Nothing is read of a table of more than `mostRows`.
  // True while there is more to read; false too when it would be of no use. For the moments in which a program waits.
  virtual bool readAhead(std::string_view sql, std::chrono::milliseconds time, std::int64_t mostRows) = 0;

  // Whether a server still looks for places in the order of a list that was opened here, from which any part of it is
  // quickly reached. Those found before the database is closed are there for all desks. Costs nothing.
  [[nodiscard]] virtual bool looksForPlaces() = 0;
  // Whether a server makes indexes for order that a table of an earlier version lacks, for this program or another.
  [[nodiscard]] virtual bool makesIndexes() = 0;

  virtual TableDef tableDef(std::string_view table) = 0;  // 3078 when there is none
  virtual std::vector<std::string> tableNames() = 0;
  virtual void createTable(const TableDef& table) = 0;
  // Adds what the stored form of a table of an earlier version lacks now. Can be interrupted at any moment, and costs
  // little when nothing is missing.
  // `table` is as it would be made now. A server goes on with what takes long after the call (a column's index).
  virtual void upgradeTable(const TableDef& table) = 0;

  // A number that moves whenever the rows of the table may have changed, by this or another copy. Cheap.
  virtual std::uint64_t tableVersion(std::string_view table) = 0;

  // From now on selects see the columns of `masks` masked, whatever they are opened as; null ends that. Recordsets and
  // windows that are open keep what they were opened with. A recordset over a masked column cannot be changed. Within
  // an AsStored, and in changing statements, masks do not count.
  virtual void setMasks(MasksPtr masks) = 0;
  [[nodiscard]] virtual const MasksPtr& masks() const = 0;

  // Waits until everything that was committed is on the disk; commits alone may still be lost with the power. Throws
  // Error when the device fails. No one else may open or close the file's bytes while it is open here: see
  // docs/storage.md.
  virtual void makeDurable() = 0;

  // Writes the database, as it is at one moment, to a new file, while others go on reading and changing it. The
  // result is the number of rows of each table at that moment. Throws Error, 3204 when the file exists;
  // 3059 when the watcher stopped it. What was written of the file then goes again.
  virtual std::vector<TableRows> copyTo(const std::filesystem::path& file) = 0;
  // What is damaged in the stored form, for a person who has to decide whether to restore a copy; empty when it is
  // whole. Reads all of it.
  virtual std::vector<std::string> damage() = 0;

  // `watcher` is called every few milliseconds while a statement runs; it must not use this database, and an empty one
  // ends the watch. Its answer false ends the statement with Error 3059 while no transaction is open, and the
  // connection to a server with 3151 when that does not end it, or has been silent for long within a transaction.
  virtual void watch(std::function<bool()> watcher) = 0;

 protected:
  friend class Transaction;
  friend class ReadView;
  friend class AsStored;
  // Nesting is counted; only the outermost level begins and commits, a rollback of any level undoes to its own begin.
  virtual void begin() = 0;
  virtual void commit() = 0;
  virtual void rollback() noexcept = 0;
  virtual void beginReadView() = 0;
  virtual void endReadView() noexcept = 0;
  virtual void beginAsStored() = 0;
  virtual void endAsStored() noexcept = 0;
};

// Changes between construction and commit() become visible and durable together; left without commit, they are undone.
// Exclusive among writers: construction waits for the others (Error 3260 after ten seconds), and until the end no one
// else changes anything. So a number that is read and written back within one transaction is given out once, and rows
// that are all deleted and rewritten cannot get mixed with another copy's. Whatever reads and then writes relies on
// this, and on nothing else: change tags, settings, "Next RecID", "LastCurrencyID", numbers of users and groups, trunks
// taken, definitions and currencies that are rewritten whole.
class Transaction {
 public:
  explicit Transaction(Database& database) : database_(&database) { database.begin(); }
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;
  ~Transaction() {
    if (database_ != nullptr) database_->rollback();
  }
  void commit() {
    database_->commit();
    database_ = nullptr;
  }

 private:
  Database* database_;
};

// While it lives, other copies' changes need not be looked for again: what was current at its start serves. For the
// length of one price or one recorded call.
class ReadView {
 public:
  explicit ReadView(Database& database) : database_(database) { database.beginReadView(); }
  ReadView(const ReadView&) = delete;
  ReadView& operator=(const ReadView&) = delete;
  ~ReadView() { database_.endReadView(); }

 private:
  Database& database_;
};

// While it lives, what is opened is read as it is stored, whatever the session's masks: for work whose result no person
// of the session sees. May be nested.
class AsStored {
 public:
  explicit AsStored(Database& database) : database_(database) { database.beginAsStored(); }
  AsStored(const AsStored&) = delete;
  AsStored& operator=(const AsStored&) = delete;
  ~AsStored() { database_.endAsStored(); }

 private:
  Database& database_;
};

// Opens a file, or a database on a server ("postgresql://user@host:port/database/tallybook.mdb": postgres/address.h).
// `connect` is the documented connect text (";pwd=..."), which this driver's files do not need.
// Errors name the file: 3024 missing, 3051 no right or not writable, 3343 not one of this program's files; a file that
// is an old Jet database is 3343 with a description that says how to convert it. 3151 when there is no server.
std::unique_ptr<Database> openDatabase(const std::filesystem::path& path, OpenMode mode, std::string_view connect = {});

// Opens a file for reading and writing or, where it cannot be written now (rights, a full disk), for reading. Throws as
// openDatabase.
struct OpenedDatabase {
  std::unique_ptr<Database> database;
  std::string readOnlyReason;  // why it cannot be written, for the operator; empty while it can
};
OpenedDatabase openWritableOrReadOnly(const std::filesystem::path& path);

// Whether a table cannot have this name, for a database keeps things of its own under it.
bool isReservedTableName(std::string_view name);

// Name and version of the library that keeps the database files, for a person.
std::string databaseLibrary();

// Makes a new, empty file or database on a server; refuses (3204) when it exists.
std::unique_ptr<Database> createDatabase(const std::filesystem::path& path);

}  // namespace jet
