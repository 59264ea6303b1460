#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "base/text.h"
#include "jet/engine/memory/evaluator.h"
#include "jet/engine/memory/result_cache.h"
#include "jet/engine/memory/row_source.h"
#include "jet/engine/memory/select_plan.h"
#include "jet/engine/memory/select_text.h"
#include "jet/engine/memory/table_memory.h"
#include "jet/parser/shape_memory.h"

namespace jet::memory {

// Answers selects from memory where it can, so that pricing and naming a call, a dozen selects on reference data, costs
// microseconds; every other select is handed to the database. The answer is the one that the database would give as of
// the counters of the tables' versions.
class QueryMemory {
 public:
  // The source must outlive this.
  explicit QueryMemory(RowSource& source);
  QueryMemory(const QueryMemory&) = delete;
  QueryMemory& operator=(const QueryMemory&) = delete;
  ~QueryMemory();

  // The rows of a select. Errors are those of the database.
  std::shared_ptr<const ResultTable> open(std::string_view sql);
  std::shared_ptr<const ResultTable> open(PreparedSelect& select, std::span<const base::FormatArgument> values);

 private:
  // All that is kept for the selects of one shape.
  struct CachedSelect final : PreparedPlace {
    TableMemory* table = nullptr;  // null: always the database's
    std::shared_ptr<const TableDef> plannedFor;
    std::unique_ptr<SelectPlan> plan;
  };
  using CachedSelectPtr = std::shared_ptr<CachedSelect>;

  const CachedSelectPtr& selectOf(std::string_view sql);
  CachedSelect& selectOf(PreparedSelect& select, SelectText& text);
  TableMemory* tableOf(const bind::BoundStatement& statement);
  const SelectPlan* planOf(CachedSelect& select, SelectText& text);
  std::shared_ptr<const ResultTable> answer(CachedSelect& select, SelectText& text, std::span<const Value> literals);
  std::shared_ptr<const ResultTable> fromRows(SelectText& text, const SelectPlan& plan, TableMemory& table,
                                              IndexedRows& rows);
  std::shared_ptr<const ResultTable> fromDatabase(SelectText& text, const SelectPlan& plan, TableMemory& table);
  std::shared_ptr<const ResultTable> fromPacked(SelectText& text, const SelectPlan& plan, const PackedRows& rows);
  std::shared_ptr<const ResultTable> runOn(SelectText& text, const SelectPlan& plan, const RowSet& rows,
                                           std::optional<std::span<const std::uint32_t>> candidates);
  [[nodiscard]] bool beginPlan(const SelectPlan& plan, std::span<const Value> literals);
  bool findByText(const SelectPlan& plan, TableMemory& table);

  RowSource& source_;
  ResultCache results_;
  ShapeMemory shapes_;
  std::size_t generation_ = 0;            // of shapes_
  std::vector<CachedSelectPtr> selects_;  // by number of the shape
  std::vector<CachedSelectPtr> lent_;     // those that a prepared select keeps
  std::unordered_map<std::string, std::unique_ptr<TableMemory>, base::TextHash, std::equal_to<>> tables_;  // folded
  // Used again from select to select.
  Shape shape_;
  Evaluator evaluator_;
  std::vector<std::int64_t> keys_;
  std::vector<std::uint32_t> positions_;
  std::vector<Value> cells_;
};

}  // namespace jet::memory
