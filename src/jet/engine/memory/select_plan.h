#pragma once

#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "jet/engine/memory/indexed_rows.h"
#include "jet/snapshot.h"
#include "jet/table_def.h"

namespace jet::memory {

// A select over one table, ready to be run on the table's rows.
class SelectPlan {
 public:
  // Null when the select needs the database: joins, groups, aggregates.
  static std::unique_ptr<SelectPlan> make(std::shared_ptr<const bind::BoundQuery> query);

  [[nodiscard]] const TableDef& definition() const { return query_->statement.table(); }
  [[nodiscard]] const Probes& probes() const { return probes_; }
  [[nodiscard]] bool deterministic() const { return query_->deterministic; }
  [[nodiscard]] const std::shared_ptr<const ResultTable>& noRows() const { return noRows_; }

  // Takes the literals of the text that is to be run.
  void begin(Evaluator& evaluator, std::span<const Value> literals) const;
  // The result over the given rows of the table (ascending), or over all of them. Rows that are equal in the order keep
  // the table's.
  std::shared_ptr<const ResultTable> run(Evaluator& evaluator, const RowSet& rows,
                                         std::optional<std::span<const std::uint32_t>> candidates) const;

 private:
  explicit SelectPlan(std::shared_ptr<const bind::BoundQuery> query);
  [[nodiscard]] const bind::BoundStatement& statement() const { return query_->statement; }
  // One of the parts of a condition that must hold together.
  struct Part {
    const bind::BoundExpression* test = nullptr;  // of query_
    bool comparesColumn = false;                  // a column of whole numbers with a literal
  };

  void addParts(const bind::BoundExpression& condition);
  [[nodiscard]] bool holds(Evaluator& evaluator, const Value* row) const;
  [[nodiscard]] bool sortsItsItems() const;

  void select(Evaluator& evaluator, const RowSet& rows, std::optional<std::span<const std::uint32_t>> candidates,
              std::vector<std::uint32_t>& selected) const;
  static void borrow(ResultTable& result, const RowSet& rows, const std::vector<std::uint32_t>& selected);
  void copy(ResultTable& result, Evaluator& evaluator, const RowSet& rows,
            const std::vector<std::uint32_t>& selected) const;
  void dropDuplicates(Evaluator& evaluator, const RowSet& rows, std::vector<std::uint32_t>& selected) const;
  void sort(Evaluator& evaluator, const RowSet& rows, std::vector<std::uint32_t>& selected) const;
  void appendItems(Evaluator& evaluator, const Value* row, std::vector<Value>& cells) const;

  std::shared_ptr<const bind::BoundQuery> query_;
  Probes probes_;
  std::vector<Part> parts_;
  bool wholeRows_ = false;  // the items are the table's columns as they are
  ColumnNames columns_;
  std::shared_ptr<const ResultTable> noRows_;
};

}  // namespace jet::memory
