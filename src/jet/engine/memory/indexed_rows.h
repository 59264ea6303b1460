#pragma once

#include <memory>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "jet/engine/memory/evaluator.h"
#include "jet/engine/memory/row_index.h"

namespace jet::memory {

// What of a condition can be looked up: the parts that must hold together (joined by And at the top) and compare a
// column with a literal.
struct Probes {
  struct Equal {  // column = literal
    std::size_t column;
    std::size_t literal;
  };
  struct OwnPrefix {  // 'text' like column + 'ending'
    std::size_t column;
    std::size_t text;
    std::size_t ending;
  };
  struct Pattern {  // column like 'pattern'
    std::size_t column;
    std::size_t literal;
  };
  std::vector<Equal> equal;  // ascending columns, each once
  std::optional<OwnPrefix> ownPrefix;
  std::vector<Pattern> patterns;
};

Probes findProbes(const bind::BoundExpression& condition);

// Rows with the indexes that conditions have asked for. The cells must stay where they are.
class IndexedRows {
 public:
  explicit IndexedRows(RowSet rows) : rows_(std::move(rows)) {}

  [[nodiscard]] const RowSet& rows() const { return rows_; }
  // The rows, ascending, among which all those are that meet the condition; nothing when no index serves and every row
  // must be tested. Valid until the next call.
  std::optional<std::span<const std::uint32_t>> candidates(const Probes& probes, const Evaluator& evaluator);

 private:
  struct Index {
    std::vector<std::size_t> columns;
    std::optional<std::size_t> prefixColumn;
    RowIndex rows;
  };

  const RowIndex& indexOf(const Probes& probes, bool withPrefix);
  std::span<const std::uint32_t> withPrefix(const RowIndex& index, KeyHash hash, std::string_view text);

  RowSet rows_;
  std::vector<std::unique_ptr<Index>> indexes_;
  std::vector<std::uint32_t> found_;
};

}  // namespace jet::memory
