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

  // The rows of a select. Errors are those of the database.
  std::shared_ptr<const ResultTable> open(std::string_view sql);

 private:
  // All that is kept for the selects of one shape.
  struct CachedSelect {
    TableMemory* table = nullptr;  // null: always the database's
    std::shared_ptr<const TableDef> plannedFor;
    std::unique_ptr<SelectPlan> plan;
  };

  CachedSelect& selectOf(std::string_view sql);
  TableMemory* tableOf(const bind::BoundStatement& statement);
  const SelectPlan* planOf(CachedSelect& select, std::string_view sql);
  std::shared_ptr<const ResultTable> fromRows(std::string_view sql, const SelectPlan& plan, TableMemory& table,
                                              IndexedRows& rows);
  std::shared_ptr<const ResultTable> fromDatabase(std::string_view sql, const SelectPlan& plan, TableMemory& table);
  std::shared_ptr<const ResultTable> fromPacked(std::string_view sql, const SelectPlan& plan, const PackedRows& rows);
  std::shared_ptr<const ResultTable> runOn(std::string_view sql, const SelectPlan& plan, const RowSet& rows,
                                           std::optional<std::span<const std::uint32_t>> candidates);
  [[nodiscard]] bool beginPlan(const SelectPlan& plan);
  bool findByText(const SelectPlan& plan, TableMemory& table);

  RowSource& source_;
  ResultCache results_;
  ShapeMemory shapes_;
  std::size_t generation_ = 0;                          // of shapes_
  std::vector<std::unique_ptr<CachedSelect>> selects_;  // by number of the shape
  std::unordered_map<std::string, std::unique_ptr<TableMemory>, base::TextHash, std::equal_to<>> tables_;  // folded
  // Used again from select to select.
  Shape shape_;
  Evaluator evaluator_;
  std::vector<std::int64_t> keys_;
  std::vector<std::uint32_t> positions_;
  std::vector<Value> cells_;
};

}  // namespace jet::memory
