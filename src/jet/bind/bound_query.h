#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "jet/bind/bound_expression.h"
#include "jet/masks.h"
#include "jet/parser/ast.h"
#include "jet/table_def.h"

namespace jet::bind {

using TableDefPtr = std::shared_ptr<const TableDef>;

struct BoundTable {
  TableDefPtr def;
  std::string name;   // as the statement writes it
  std::string alias;  // the definition's name when none is given
};

// A table, or a nested join of some.
struct BoundSource {
  Source::Join join = Source::Join::None;
  std::size_t table = 0;  // into BoundStatement::tables
  std::unique_ptr<BoundSource> left;
  std::unique_ptr<BoundSource> right;
  BoundExpression on;
};

struct BoundItem {
  BoundExpression expression;
  std::string name;  // of the column in the result
};

struct BoundOrder {
  BoundExpression expression;       // a copy of the item's when it stands for one
  std::optional<std::size_t> item;  // the item that it names by position or alias
  bool descending = false;
};

struct BoundAssignment {
  std::size_t field = 0;  // of tables[0]
  BoundExpression value;  // as the column keeps it
};

struct BoundStatement {
  Statement::Kind kind = Statement::Kind::Select;
  std::vector<BoundTable> tables;  // in the order of the text; the only one of changes
  BoundSource source;
  bool distinct = false;
  std::optional<std::size_t> top;
  std::vector<BoundItem> items;  // stars are spread out
  std::optional<BoundExpression> where;
  std::vector<BoundExpression> groupBy;
  std::optional<BoundExpression> having;
  std::vector<BoundOrder> orderBy;
  std::vector<BoundAssignment> assignments;  // of Insert and Update
  FieldDef newField;                         // of AlterAddColumn

  // Rows are rows of one table: neither grouped nor joined nor without duplicates. TOP makes it none.
  bool keyed = false;
  // Keyed, and the items are columns of the table: its rows can be changed.
  bool updatable = false;
  bool grouped = false;  // GROUP BY, or an aggregate among the items

  [[nodiscard]] bool readsOneTable() const { return source.join == Source::Join::None; }
  [[nodiscard]] const TableDef& table() const { return *tables.front().def; }
};

// A statement with the criteria that are to hold beside it, ready to be run by any executor. Good as long as the
// definitions that it was bound to.
struct BoundQuery {
  BoundStatement statement;
  std::optional<BoundExpression> criteria;
  std::vector<LiteralUse> literals;
  std::vector<Site> sites;
  std::size_t resultCount = 0;  // one more than the greatest BoundExpression::result
  bool deterministic = true;    // no now(), date(), time()
};

}  // namespace jet::bind
