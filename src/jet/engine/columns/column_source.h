#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "jet/engine/columns/column.h"
#include "jet/engine/columns/key_runs.h"
#include "jet/engine/shaped_text.h"
#include "jet/table_def.h"
#include "jet/value.h"

namespace jet::columns {

// Not Null values that were added up.
struct PartSum {
  double real = 0;
  std::int64_t whole = 0;
  std::int64_t values = 0;
};

// What a statistic reads from the database. Errors are those of the database.
class ColumnSource {
 public:
  // Numbers that move when the table's rows may have changed: `rows` by any change, `rewrites` by every change other
  // than rows that this program added after all others.
  struct Changes {
    std::uint64_t rows = 0;
    std::uint64_t rewrites = 0;
    bool operator==(const Changes&) const = default;
  };
  struct Read {
    std::size_t refused = kNone;  // place in `columns` of the one that could not hold a cell; reading stopped there
    // The work of finding the rows, in rows of a plain scan.
    std::int64_t work = 0;
    bool doubtful = false;  // of readParts(): reading stopped at a sum that has to be asked for exactly
    static constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();
    [[nodiscard]] bool complete() const { return refused == kNone; }
  };

  virtual ~ColumnSource() = default;

  // At least the number of rows; does not read them.
  virtual std::int64_t rowLimit(const TableDef& table) = 0;
  // Whether rows can be read in the order of that column without sorting all of them.
  virtual bool readsInOrder(const TableDef& table, std::size_t field) = 0;
  virtual Changes changes(std::string_view table) = 0;
  // Whether a select that groups costs less than reading its rows.
  [[nodiscard]] virtual bool isServer() const = 0;

  // Between the two, what is read is of one moment. changes() is of that moment, too.
  virtual void beginView() = 0;
  virtual void endView() noexcept = 0;

  // The number of all rows and the least and greatest of their keys.
  struct Extent {
    std::int64_t rows = 0;
    std::int64_t firstKey = 0;
    std::int64_t lastKey = 0;
  };
  virtual Extent extent(const TableDef& table) = 0;
  // Appends the fields of all rows with after < key <= last to the columns, and their keys, in the order of keys.
  virtual Read readColumns(const TableDef& table, std::span<const std::size_t> fields, std::span<Column* const> columns,
                           std::int64_t after, std::int64_t last, KeyRuns& keys) = 0;
  // The namedFields() of the rows that meet the condition of a select, in the order in which the database reads them.
  // `block` is called for every kBlockRows rows, and the rest, with their keys; it takes the rows out of the columns.
  virtual Read readSelected(const engine::ShapedText& text, std::span<Column* const> columns,
                            const std::function<void(std::span<const std::int64_t> keys)>& block) = 0;
  // A part of a group, as a server adds it up.
  struct Part {
    std::int64_t firstRow = 0;  // the lowest key
    std::int32_t key = 0;       // what the group is of, as the column gives it
    std::int64_t rows = 0;
    std::span<const PartSum> sums = {};  // of each operand; of one that is only summed, 1 value for any number
  };
  // Those of all groups of a select that adds up so many operands. `key` takes what they are groups of. What is not
  // asked for `exactly` is there sooner, nearly always.
  virtual Read readParts(const engine::ShapedText& text, bool exactly, Column& key, std::size_t operands,
                         const std::function<void(const Part& part)>& take) = 0;
  // The fields of the rows of some keys, row after row in the order of `keys`; Nulls for a row that is gone.
  virtual std::vector<Value> readRows(const TableDef& table, std::span<const std::size_t> fields,
                                      std::span<const std::int64_t> keys) = 0;
};

// A view for the length of a scope.
class SourceView {
 public:
  explicit SourceView(ColumnSource& source) : source_(source) { source.beginView(); }
  SourceView(const SourceView&) = delete;
  SourceView& operator=(const SourceView&) = delete;
  ~SourceView() { source_.endView(); }

 private:
  ColumnSource& source_;
};

}  // namespace jet::columns
