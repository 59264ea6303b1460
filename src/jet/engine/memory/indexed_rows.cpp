#include "jet/engine/memory/indexed_rows.h"

#include <algorithm>

namespace jet::memory {

namespace {

using bind::BoundExpression;
using Kind = BoundExpression::Kind;

// Fewer rows are tested faster than they are looked up.
constexpr std::size_t kFewRows = 8;

void addEqual(const BoundExpression& comparison, Probes& probes) {
  const BoundExpression& left = comparison.operands[0];
  const BoundExpression& right = comparison.operands[1];
  if (left.kind != Kind::Column || right.kind != Kind::Literal || !isHashable(left.type)) return;
  const auto place =
      std::lower_bound(probes.equal.begin(), probes.equal.end(), left.index,
                       [](const Probes::Equal& probe, std::size_t column) { return probe.column < column; });
  if (place != probes.equal.end() && place->column == left.index) return;
  probes.equal.insert(place, {left.index, right.index});
}

void collect(const BoundExpression& part, Probes& probes) {
  if (part.kind == Kind::Logic && part.op == Operator::And) {
    for (const BoundExpression& side : part.operands) collect(side, probes);
  } else if (part.kind == Kind::Compare && part.op == Operator::Equal) {
    addEqual(part, probes);
  } else if (part.kind == Kind::LikeOwnPrefix && !probes.ownPrefix) {
    probes.ownPrefix = {part.operands[1].index, part.operands[0].index, part.operands[2].index};
  } else if (part.kind == Kind::Like && part.operands[0].kind == Kind::Column && part.operands[0].type == Type::Text &&
             part.operands[1].kind == Kind::Literal) {
    probes.patterns.push_back({part.operands[0].index, part.operands[1].index});
  }
}

}  // namespace

Probes findProbes(const bind::BoundExpression& condition) {
  Probes probes;
  collect(condition, probes);
  return probes;
}

std::optional<std::span<const std::uint32_t>> IndexedRows::candidates(const Probes& probes,
                                                                      const Evaluator& evaluator) {
  const bool byPrefix = probes.ownPrefix && evaluator.literal(probes.ownPrefix->ending) == Value("*");
  if (rows_.count < kFewRows || (probes.equal.empty() && !byPrefix)) return std::nullopt;
  KeyHash hash;
  for (const Probes::Equal& probe : probes.equal) {
    if (!hash.add(evaluator.literal(probe.literal))) return std::span<const std::uint32_t>();
  }
  const RowIndex& index = indexOf(probes, byPrefix);
  if (!byPrefix) return index.find(hash.finished());
  return withPrefix(index, hash, evaluator.literal(probes.ownPrefix->text).text());
}

std::span<const std::uint32_t> IndexedRows::withPrefix(const RowIndex& index, KeyHash hash, std::string_view text) {
  found_.assign(index.unkeyed().begin(), index.unkeyed().end());
  for (std::size_t length = 0;; ++length) {
    if (index.hasPrefixOf(length)) {
      const auto rows = index.find(hash.finished());
      found_.insert(found_.end(), rows.begin(), rows.end());
    }
    if (length == text.size() || length == index.longestPrefix()) break;
    hash.addByte(text[length]);
  }
  std::sort(found_.begin(), found_.end());
  return found_;
}

const RowIndex& IndexedRows::indexOf(const Probes& probes, bool withPrefix) {
  const auto prefixColumn = withPrefix ? std::optional(probes.ownPrefix->column) : std::nullopt;
  const auto serves = [&](const std::unique_ptr<Index>& index) {
    return index->prefixColumn == prefixColumn &&
           std::equal(index->columns.begin(), index->columns.end(), probes.equal.begin(), probes.equal.end(),
                      [](std::size_t column, const Probes::Equal& probe) { return column == probe.column; });
  };
  const auto found = std::find_if(indexes_.begin(), indexes_.end(), serves);
  if (found != indexes_.end()) return (*found)->rows;
  std::vector<std::size_t> columns;
  for (const Probes::Equal& probe : probes.equal) columns.push_back(probe.column);
  RowIndex rows = prefixColumn ? RowIndex(rows_, columns, *prefixColumn) : RowIndex(rows_, columns);
  indexes_.push_back(std::make_unique<Index>(Index{std::move(columns), prefixColumn, std::move(rows)}));
  return indexes_.back()->rows;
}

}  // namespace jet::memory
