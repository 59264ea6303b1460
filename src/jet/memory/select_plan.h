#pragma once

#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "jet/memory/indexed_rows.h"
#include "jet/snapshot.h"
#include "jet/table_def.h"

namespace jet::memory {

// A select over one table, ready to be run on the table's rows.
class SelectPlan {
 public:
  // Null when the select needs the database: joins, groups, aggregates, names that are unknown, and whatever the Binder
  // does not support.
  static std::unique_ptr<SelectPlan> make(const Statement& statement, std::shared_ptr<const TableDef> definition);

  [[nodiscard]] const std::shared_ptr<const TableDef>& definition() const { return definition_; }
  [[nodiscard]] const Probes& probes() const { return probes_; }
  [[nodiscard]] bool deterministic() const { return deterministic_; }
  [[nodiscard]] const std::shared_ptr<const ResultTable>& noRows() const { return noRows_; }

  // Takes the literals of the text that is to be run.
  void begin(Evaluator& evaluator, std::span<const Value> literals) const;
  // The result over the given rows of the table (ascending), or over all of them. Rows that are equal in the order keep
  // the table's.
  std::shared_ptr<const ResultTable> run(Evaluator& evaluator, const RowSet& rows,
                                         std::optional<std::span<const std::uint32_t>> candidates) const;

 private:
  struct OrderTerm {
    BoundExpression expression;
    bool descending = false;
  };

  SelectPlan() = default;
  [[nodiscard]] bool bindItems(const Statement& statement, const ColumnScope& scope, Binder& binder);
  [[nodiscard]] bool bindOrder(const Statement& statement, const ColumnScope& scope, Binder& binder);
  std::optional<std::size_t> itemCalled(std::string_view name) const;
  [[nodiscard]] bool isSelected(const BoundExpression& expression) const;

  void select(Evaluator& evaluator, const RowSet& rows, std::optional<std::span<const std::uint32_t>> candidates,
              std::vector<std::uint32_t>& selected) const;
  void dropDuplicates(Evaluator& evaluator, const RowSet& rows, std::vector<std::uint32_t>& selected) const;
  void sort(Evaluator& evaluator, const RowSet& rows, std::vector<std::uint32_t>& selected) const;
  void appendItems(Evaluator& evaluator, const Value* row, std::vector<Value>& cells) const;

  std::shared_ptr<const TableDef> definition_;
  std::vector<LiteralUse> literals_;
  std::size_t resultCount_ = 0;
  bool deterministic_ = true;
  std::optional<BoundExpression> where_;
  Probes probes_;
  std::vector<BoundExpression> items_;
  bool wholeRows_ = false;  // the items are the table's columns as they stand
  ColumnNames columns_;
  std::shared_ptr<const ResultTable> noRows_;
  bool distinct_ = false;
  std::optional<std::size_t> top_;
  std::vector<OrderTerm> order_;
};

}  // namespace jet::memory
