#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "base/text.h"
#include "jet/engine/memory/indexed_rows.h"
#include "jet/parser/parser.h"
#include "jet/snapshot.h"

namespace jet::memory {

// Finds rows of a finished select by criteria. Keeps the bound criteria by their shape, and the indexes they use.
class SnapshotSearch final : public RowSearch {
 public:
  // The table must outlive this.
  explicit SnapshotSearch(const ResultTable& table);

  // From row `from` on. Errors 3075, 3061, 3421.
  std::optional<std::size_t> find(std::string_view criteria, std::size_t from) override;

 private:
  struct Criteria {
    bind::BoundQuery query;
    Probes probes;
  };

  const Criteria& criteriaOf(std::string_view text);

  bind::TableDefPtr columns_;
  std::vector<Value> copied_;  // of rows that are borrowed
  IndexedRows rows_;
  Evaluator evaluator_;
  Shape shape_;  // its storage is used again from search to search
  std::unordered_map<std::string, Criteria, base::TextHash, std::equal_to<>> byShape_;
};

}  // namespace jet::memory
