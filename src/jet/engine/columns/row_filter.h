#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "base/look.h"
#include "jet/date_part.h"
#include "jet/engine/columns/column.h"
#include "jet/engine/memory/evaluator.h"
#include "jet/table_def.h"

namespace jet::columns {

// Rows are worked through in blocks of this many, so that what lies between the steps stays in the processor's cache.
inline constexpr std::size_t kBlockRows = 2048;

// A condition over the columns of a table, tested block by block. It is taken apart at its And, Or and Not into tests
// of one column each. A test of texts, or of numbers of a small range, is worked out once for each different value and
// then looked up; other numbers, and parts of dates, are compared.
class RowFilter {
 public:
  // Nothing when a test names several columns or one that can neither be looked up nor compared.
  static std::optional<RowFilter> make(const bind::BoundExpression& condition, const TableDef& definition);

  // The columns it reads, by their place in the definition, each once.
  [[nodiscard]] const std::vector<std::size_t>& fields() const { return fields_; }

  // Takes the literals that `evaluator` was begun with and the columns, by their place in the definition; they must
  // outlive the calls of select(). False when the database must answer after all. Errors are the evaluator's
  // and those of `look`.
  [[nodiscard]] bool begin(memory::Evaluator& evaluator, std::span<const Column* const> columns,
                           const base::Look& look);
  // After begin(): true when it names no column and holds.
  [[nodiscard]] bool always();
  // The rows of [from, from + count) that meet it, count <= kBlockRows, as distances from `from`.
  void select(std::size_t from, std::size_t count, std::vector<std::uint32_t>& rows);

 private:
  using Truths = std::vector<memory::Truth>;

  struct Node {
    enum class Kind { And, Or, Not, Test };
    Kind kind = Kind::Test;
    std::vector<Node> operands;
    // Test
    const bind::BoundExpression* expression = nullptr;
    std::optional<std::size_t> field;  // none: the same for every row
    // Set by begin():
    const Column* column = nullptr;
    Truths known;            // without a column: the answer; with one: by value, counted from `first`, for `first` on
    std::int32_t first = 0;  // texts: 0, which is Null; numbers: the least one
    memory::Truth ofNull = memory::Truth::Unknown;
    std::optional<DatePart> part;   // what is compared of a date; none: the date itself
    Operator op = Operator::Equal;  // with no `known`
    double constant = 0;
  };

  RowFilter() = default;
  [[nodiscard]] bool take(const bind::BoundExpression& expression, const TableDef& definition, Node& node);
  [[nodiscard]] bool prepare(Node& node, memory::Evaluator& evaluator, std::span<const Column* const> columns,
                             const base::Look& look);
  [[nodiscard]] bool prepareComparison(Node& node, memory::Evaluator& evaluator);
  void readParts(DatePart part, std::size_t count);
  void lookUpAll(Node& node, memory::Evaluator& evaluator, const base::Look& look);
  void test(const Node& node, std::size_t from, std::size_t count, memory::Truth* out, std::size_t depth);
  void testColumn(const Node& node, std::size_t from, std::size_t count, memory::Truth* out);
  memory::Truth* buffer(std::size_t depth);

  Node root_;
  std::vector<std::size_t> fields_;
  std::size_t width_ = 0;
  std::vector<Value> cells_;
  std::vector<std::int32_t> integers_;
  std::vector<Truths> buffers_;  // by depth
};

}  // namespace jet::columns
