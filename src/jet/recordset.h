#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "jet/value.h"

namespace jet {

// A dynaset: a set of row keys of one table; a row is read again whenever it becomes current, so other copies' changes
// are seen. Opening costs nothing whatever the size of the table. Selects that group, join texts or drop duplicates
// give a recordset that can be read but not changed (3027).
//
// Every call may throw jet::Error with the numbers of error.h. A recordset must not outlive its Database.
class Recordset {
 public:
  virtual ~Recordset() = default;

  // Position. bof and eof are both true when the set is empty. moveNext past the last row sets eof; one more fails
  // (3021). A move drops a begun addNew or edit.
  virtual bool bof() = 0;
  virtual bool eof() = 0;
  virtual void moveFirst() = 0;
  virtual void moveLast() = 0;
  virtual void moveNext() = 0;
  virtual void movePrevious() = 0;

  // Makes the first (next) row that meets the condition current; without one, noMatch() is true and the position stays.
  // The condition is a condition of a WHERE clause without the word. Runs as a query that reads one row.
  virtual void findFirst(std::string_view criteria) = 0;
  virtual void findNext(std::string_view criteria) = 0;
  [[nodiscard]] virtual bool noMatch() const = 0;

  // Fields of the current row, or of the row that addNew or edit began. Names compare without regard to case; an
  // unknown one is 3265. get: 3021 without a current row, 3167 when another copy deleted it.
  virtual Value get(std::string_view field) = 0;
  virtual void set(std::string_view field, Value value) = 0;  // 3421 / 3163 when the column cannot hold the value
  [[nodiscard]] virtual const std::vector<std::string>& fieldNames() const = 0;

  // By position in fieldNames(), for loops over many rows.
  virtual Value get(std::size_t field) = 0;
  virtual void set(std::size_t field, Value value) = 0;

  // Changes. addNew starts a row of defaults, edit a copy of the current one; update writes it (3020 without either);
  // after an add the current row is the one that was current before it. remove deletes the current row, which stays
  // current but unreadable until a move.
  virtual void addNew() = 0;
  virtual void edit() = 0;
  virtual void update() = 0;
  virtual void cancelUpdate() = 0;
  virtual void remove() = 0;

  // The auto-increment key of the row that the last update added; 0 before that.
  [[nodiscard]] virtual std::int64_t lastAddedKey() const = 0;

  // Rows seen so far; complete after moveLast. 0 means empty.
  virtual std::int64_t recordCount() = 0;
  // 0-based position of the current row; -1 when there is none.
  virtual std::int64_t absolutePosition() = 0;
};

}  // namespace jet
