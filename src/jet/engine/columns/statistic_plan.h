#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "jet/bind/bound_query.h"
#include "jet/date_part.h"
#include "jet/engine/columns/row_filter.h"
#include "jet/engine/memory/evaluator.h"
#include "jet/snapshot.h"
#include "jet/table_def.h"

namespace jet::columns {

// What is summed: a number column, or a Double column with constants worked in from left to right:
// Price_Ref * (19 + 100)/100.
struct Operand {
  struct Step {
    Operator op;
    std::size_t constant;  // index into StatisticPlan::Constants
    bool operator==(const Step&) const = default;
  };
  std::size_t field = 0;
  std::vector<Step> steps;
  bool operator==(const Operand&) const = default;
};

// A select over one table that counts, sums and averages its rows by groups, ready to be run over columns.
class StatisticPlan {
 public:
  struct Grouping {
    enum class Kind { All, Text, Number, Part };  // All: the whole table is one group
    Kind kind = Kind::All;
    std::size_t field = 0;
    DatePart part = DatePart::Hour;
    bool operator==(const Grouping&) const = default;
  };
  struct Item {
    enum class Kind { Key, Rows, Count, Sum, Average, First };
    Kind kind = Kind::Key;
    std::size_t index = 0;  // of the operand, or of the field among firsts()
  };
  struct Order {
    std::size_t item;
    bool descending;
  };
  struct ListOrder {
    std::optional<std::size_t> field;  // none: the order of keys
    bool descending = false;
  };
  using Constants = std::vector<double>;

  // Null for every other select.
  static std::unique_ptr<StatisticPlan> make(std::shared_ptr<const bind::BoundQuery> query);
  // The rows of a select over one table without groups, whatever its items: their number, and their order if it is that
  // of one column.
  static std::unique_ptr<StatisticPlan> makeList(std::shared_ptr<const bind::BoundQuery> query);

  [[nodiscard]] const std::shared_ptr<const TableDef>& definition() const {
    return query_->statement.tables.front().def;
  }
  [[nodiscard]] const ColumnNames& names() const { return names_; }
  [[nodiscard]] const Grouping& grouping() const { return grouping_; }
  [[nodiscard]] const std::vector<Operand>& operands() const { return operands_; }
  [[nodiscard]] const std::vector<std::size_t>& firsts() const { return firsts_; }  // Text fields
  [[nodiscard]] const std::vector<Item>& items() const { return items_; }
  [[nodiscard]] const std::vector<Order>& order() const { return order_; }

  // Of a list; nothing when only the database can sort it.
  [[nodiscard]] const std::optional<ListOrder>& listOrder() const { return listOrder_; }

  // The columns that groups and operands read, ascending, and those of the condition beside them.
  [[nodiscard]] const std::vector<std::size_t>& fields() const { return fields_; }
  [[nodiscard]] std::vector<std::size_t> fieldsWithCondition() const;
  // False when only the database can test the condition.
  [[nodiscard]] bool testsCondition() const { return !query_->statement.where || filter_; }
  [[nodiscard]] RowFilter* filter() { return filter_ ? &*filter_ : nullptr; }

  // Takes the literals of the text that is to be run; the evaluator serves the filter's begin() then. Nothing when a
  // constant is no number. Errors are the evaluator's.
  std::optional<Constants> begin(memory::Evaluator& evaluator, std::span<const Value> literals) const;

 private:
  class Maker;
  StatisticPlan() = default;

  std::shared_ptr<const bind::BoundQuery> query_;
  ColumnNames names_;
  Grouping grouping_;
  std::vector<Operand> operands_;
  std::vector<std::size_t> firsts_;
  std::vector<Item> items_;
  std::vector<Order> order_;
  std::optional<ListOrder> listOrder_;
  std::vector<std::size_t> fields_;
  std::vector<const bind::BoundExpression*> constants_;
  std::vector<bool> divisors_;  // of each constant, whether it divides
  std::optional<RowFilter> filter_;
};

// The columns that a statement's items and grouping name, ascending: what a statistic reads, and what Role::Operands
// gives.
[[nodiscard]] std::vector<std::size_t> namedFields(const bind::BoundStatement& statement);

}  // namespace jet::columns
