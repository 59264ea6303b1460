#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "base/text.h"
#include "jet/memory/indexed_rows.h"
#include "jet/parser/parser.h"
#include "jet/snapshot.h"

namespace jet::memory {

// Finds rows of a finished select by criteria. Keeps the bound criteria by their shape, and the indexes they use.
class SnapshotSearch {
 public:
  // The table must outlive this.
  explicit SnapshotSearch(const ResultTable& table);

  std::optional<std::size_t> findFirst(std::string_view criteria);

 private:
  struct Criteria {
    BoundExpression condition;
    std::vector<LiteralUse> literals;
    std::size_t resultCount = 0;
    Probes probes;
  };

  const Criteria& criteriaOf(std::string_view text);

  ColumnScope scope_;
  IndexedRows rows_;
  Evaluator evaluator_;
  Shape shape_;  // its storage is used again from search to search
  std::unordered_map<std::string, Criteria, base::TextHash, std::equal_to<>> byShape_;
};

}  // namespace jet::memory
