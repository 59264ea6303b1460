#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "jet/bind/bound_query.h"
#include "jet/table_def.h"
#include "jet/table_rows.h"
#include "jet/value.h"

namespace jet::engine {

// The hidden number of a row: the auto-increment column where the table has one, else one that the driver keeps beside
// the columns. It never changes while the row exists. "The order of the table" is that of ascending keys: that of the
// roles that give keys, of rows that are equal under their ORDER BY, and of what First() and Last() mean by first. A
// select that is run without ORDER BY may give its rows in any order.
using RowKey = std::int64_t;

// What a query over a bound select is for. "Keys" give key() only, "rows" key() and the items.
enum class Role : char {
  Run = 'r',           // the statement itself, of any kind; no key()
  Among = 'i',         // the same over the rows of some keys: extras are kAmongKeys of them
  Count = 'c',         // key(): the number of rows
  CountBefore = 'p',   // the same of those before a key (extra 0)
  NextKeys = 'k',      // keys after a key (0), in the table's order, at most (1)
  PreviousKeys = 'K',  // keys before a key (0), backwards, at most (1)
  OrderedKeys = 'o',   // all keys in the select's order
  KeysPage = 'w',      // at most (0) keys in the select's order, (1) left out before
  KeysPageBack = 'W',  // the same from the end, backwards
  KeysFrom = 'a',      // from the row of key (0) on, at most (1), (2) left out; a select's order of one item at most
  KeysBefore = 'A',    // the same before that row, backwards
  FindFirst = 'f',     // the first row that meets the criteria
  FindNext = 'n',      // the first such row after a key (0), in the table's order
  Matches = 'm',       // keys of all rows that meet the criteria, in the select's order
  Read = 'x',          // the row of a key (0), whether it meets the select's condition or not
  ReadMatching = 'g',  // the row of a key (0) if it meets condition and criteria
  Operands = 'y',      // keys, and the columns that items and grouping name, ascending, in no order
  // Of a driver that isServer():
  ReadEach = 'X',  // as Read for many keys (all extras), in no order
  Sums = 's',      // a select of one grouping, by groups of equal stored values: key() is the least of each, then what
               // it groups by, the number of rows, and of whatever is counted, summed or averaged, each column once,
               // the number of values and their sum; when it is only summed, at least 1 for the number. A sum of values
               // that are worked out may be NaN instead, and the number wrong then: ExactSums says what they are
  ExactSums = 'S',
};

inline constexpr std::size_t kAmongKeys = 16;

// What the values at a site allow. The classes, not the values, belong to a prepared query.
enum class SiteClass : char {
  General = 'g',      // nothing: compare letters, match patterns in full
  Plain = 't',        // Equal sites: texts of ASCII alone, equal under A-Z folding to what they are equal to at all
  Equal = 'e',        // Like sites, all of them ASCII: no wildcard
  Anything = 'a',     // "*"
  Prefix = 'p',       // "text*"
  Contained = 'c',    // "*text*"
  OwnPrefixes = 'o',  // the column equals one of `prefixes`
};

struct SiteValue {
  SiteClass kind = SiteClass::General;
  std::string text;                   // Equal, Prefix, Contained: what is between the wildcards
  std::vector<std::string> prefixes;  // OwnPrefixes, filled up to a multiple of kPrefixStep
};

// Numbers of nearly equal length share a query.
inline constexpr std::size_t kPrefixStep = 8;

struct QueryRequest {
  Role role = Role::Run;
  const bind::BoundQuery* query = nullptr;  // with criteria where the role takes some; outlives the Query
  std::span<const SiteValue> sites = {};    // one for each site: the classes and the numbers of prefixes are good
  std::string_view text = {};               // of the statement, for errors
};

// Values of one run. Literals and sites must stay until the query is bound again or reset; extras only during bind(),
// which copies what it needs of them.
struct Arguments {
  std::span<const Value> literals;       // one for each of BoundQuery::literals, converted
  std::span<const SiteValue> sites;      // of the classes that the query was prepared for
  std::span<const std::int64_t> extras;  // as the role says
};

// A value as it is stored: dates as "YYYY-MM-DD HH:MM:SS", Yes/No as 0 and 1.
struct Cell {
  enum class Kind : std::uint8_t { Null, Integer, Real, Text, Other };  // Other: what no column of ours holds
  Kind kind = Kind::Null;
  std::int64_t integer = 0;
  double real = 0;
  std::string_view text = {};  // until the next step()
};

// The cell as a value of a column or an item of that type. A text in a date column that is no date stays a text.
Value valueOf(const Cell& cell, Type type);
// The same into a value whose storage is used again.
void readValue(const Cell& cell, Type type, Value& out);

// A prepared query. Any number may run at the same time, the same request prepared twice as well.
class Query {
 public:
  virtual ~Query() = default;

  virtual void bind(const Arguments& arguments) = 0;
  // True with a row. Errors are those of error.h; 3059 when the watcher stopped it.
  virtual bool step() = 0;
  [[nodiscard]] virtual RowKey key() const = 0;
  [[nodiscard]] virtual Cell cell(std::size_t item) const = 0;
  // Of Role::Run over a changing statement, after step() gave false: the number of rows changed.
  [[nodiscard]] virtual std::int64_t changed() const = 0;
  // The work of finding the rows since bind(), in rows of a plain scan; may be a guess.
  [[nodiscard]] virtual std::int64_t work() const = 0;
  // Lets go of the rows and of what was bound.
  virtual void reset() noexcept = 0;
  // False when something that it was prepared for no longer holds: it must not be bound again.
  [[nodiscard]] virtual bool usable() = 0;
};

// A prepared change of one row. Values are those of the fields that it was prepared for, as their columns keep them
// (jet/store_value.h); they need to stay for the call only. Errors 3022, 3183, 3260.
class RowChange {
 public:
  virtual ~RowChange() = default;
  // Insert: the key of the new row. Update, remove: the number of rows changed, 0 when the row is gone.
  virtual std::int64_t run(RowKey key, std::span<const Value* const> values) = 0;
};

// Told by Driver::lookForChanges().
class ChangeListener {
 public:
  virtual ~ChangeListener() = default;
  virtual void tableChanged(std::string_view table) = 0;
  virtual void tableAppended(std::string_view table) = 0;  // rows were added after all others, and that was all
  virtual void everythingChanged() = 0;                    // when the driver cannot tell which table it was
  virtual void definitionsChanged() = 0;
};

struct KeyRange {
  RowKey behind = std::numeric_limits<RowKey>::min();  // not itself
  RowKey last = std::numeric_limits<RowKey>::max();    // itself, too
};

// A row of a list, and the number of rows before it.
struct Place {
  std::int64_t position = 0;
  RowKey key = 0;
};

// The number of all rows and the least and greatest of their keys.
struct Extent {
  std::int64_t rows = 0;
  RowKey firstKey = 0;
  RowKey lastKey = 0;
};

// One connection to a database: all that the engine needs of one. What is above it is the engine's: the dialect,
// recordsets, windows, answers from memory, which query is prepared and for how long. Used by one thread at a time.
// Errors are jet::Error with the numbers of error.h.
class Driver {
 public:
  virtual ~Driver() = default;

  [[nodiscard]] virtual bool readOnly() const = 0;
  // False once the connection to a server was lost (Error 3151). No round trip.
  [[nodiscard]] virtual bool connected() const { return true; }
  // Asks the server whether the connection is there, and connects again when it is not; false while the server cannot
  // be reached. What was running has ended, what was prepared and is usable()
  // can be used again, and everything may have changed meanwhile.
  virtual bool reconnect() { return true; }
  // Of a server: the transaction that was begun, and whether it committed one that had this name. As in jet::Database.
  [[nodiscard]] virtual std::string transactionName() { return {}; }
  [[nodiscard]] virtual bool committed(const std::string& transaction) { return transaction.empty(); }
  // For messages to a person: the path of the file, or where the database is.
  [[nodiscard]] virtual std::string describe() const = 0;

  // Definitions. Null when there is no such table (names without regard to case). Kept until generation() moves.
  virtual bind::TableDefPtr definition(std::string_view table) = 0;
  virtual std::vector<std::string> tableNames() = 0;
  virtual void createTable(const TableDef& table) = 0;
  // Adds what the stored form of a table of an earlier version lacks now, whole or not at all; nothing when it is
  // there. `table` is the definition with the indexes for order that it should have; those may be made later.
  virtual void upgradeTable(const TableDef& table) = 0;
  // Whether indexes are being made after upgradeTable(), here or by another program.
  [[nodiscard]] virtual bool makesIndexes() { return false; }
  // Moves when definitions may have changed: whatever was bound to them is then out of date.
  [[nodiscard]] virtual std::uint64_t generation() const = 0;

  // Queries and changes.
  virtual std::unique_ptr<Query> prepare(const QueryRequest& request) = 0;
  // Fields of the rows with keys of the range, in the table's order.
  virtual std::unique_ptr<Query> scan(const TableDef& table, std::span<const std::size_t> fields, KeyRange range) = 0;
  virtual std::unique_ptr<RowChange> prepareInsert(const TableDef& table, std::span<const std::size_t> fields) = 0;
  virtual std::unique_ptr<RowChange> prepareUpdate(const TableDef& table, std::span<const std::size_t> fields) = 0;
  virtual std::unique_ptr<RowChange> prepareRemove(const TableDef& table) = 0;

  // At least the number of rows; does not read them.
  virtual std::int64_t rowLimit(const TableDef& table) = 0;
  virtual Extent extent(const TableDef& table) = 0;
  // Whether rows can be read in the order of that column without sorting all of them.
  virtual bool readsInOrder(const TableDef& table, std::size_t field) = 0;

  // A row at or before `position` of a select in its order, from which that position is quickly reached; nothing when
  // none is known. A driver for which passing many rows is slow looks for such rows beside its other work, from the
  // first question on; the request's role is of no matter.
  virtual std::optional<Place> placeBefore(const QueryRequest& request, const Arguments& arguments,
                                           std::int64_t position) {
    static_cast<void>(request), static_cast<void>(arguments), static_cast<void>(position);
    return std::nullopt;
  }

  // Whether it looks for such rows now.
  [[nodiscard]] virtual bool looksForPlaces() { return false; }

  // How many rows stand before the row of that key in such a select's order; nothing when that is not quickly said.
  virtual std::optional<std::int64_t> positionOf(const QueryRequest& request, const Arguments& arguments, RowKey key) {
    static_cast<void>(request), static_cast<void>(arguments), static_cast<void>(key);
    return std::nullopt;
  }

  // Whether questions go to a server: each costs a round trip, and to group there costs less than to hand rows over.
  [[nodiscard]] virtual bool isServer() const { return false; }

  // Transactions. begin() waits for the other writers (Error 3260 after a while); from then on only this connection
  // changes the database until commit() or rollback(): what is read within can be relied on by what is written.
  virtual void begin() = 0;
  virtual void commit() = 0;
  virtual void rollback() noexcept = 0;
  // Levels count from 1 within a transaction.
  virtual void savepoint(int level) = 0;
  virtual void release(int level) = 0;
  virtual void rollbackTo(int level) noexcept = 0;
  // False when a fault (a full disk) has undone the transaction.
  [[nodiscard]] virtual bool inTransaction() const = 0;
  // Between the two, what is read is of one moment. May be within a transaction; not nested.
  virtual void beginView() = 0;
  virtual void endView() noexcept = 0;

  // Tells what other connections changed since the last call. Cheap: it is asked before every statement. A driver that
  // hears of changes from a server may be late by some milliseconds, but not when it is to look `closely`.
  virtual void lookForChanges(ChangeListener& listener, bool closely) = 0;

  // Waits until everything that was committed is on the disk.
  virtual void makeDurable() = 0;
  // As jet::Database says.
  virtual std::vector<TableRows> copyTo(const std::filesystem::path& file) = 0;
  virtual std::vector<std::string> damage() = 0;
  // `watcher` is called every few milliseconds while a query runs; its answer false stops the query with Error 3059.
  virtual void watch(std::function<bool()> watcher) = 0;
  // What runs has had no answer for so long that its server may be given up, even within a transaction.
  [[nodiscard]] virtual bool silent() const { return false; }
};

}  // namespace jet::engine
