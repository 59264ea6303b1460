#include "jet/engine/columns/key_order.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <limits>
#include <numeric>

#include "jet/engine/columns/row_filter.h"
#include "jet/engine/memory/evaluator.h"

namespace jet::columns {

namespace {

// By code, the place of its text in the order of all; 0 for Null. Texts that are equal under folding share one.
std::vector<std::uint32_t> textRanks(const TextDictionary& texts, const base::Look& look) {
  base::LookCounter steps(look);
  std::vector<std::uint32_t> codes;
  std::vector<Value> values(texts.size() + 1);
  for (std::uint32_t code = 1; code <= texts.size(); ++code) {
    if (texts.groupOf(code) != code) continue;
    codes.push_back(code);
    values[code] = Value(texts.text(code));
  }
  std::ranges::sort(codes, [&](std::uint32_t left, std::uint32_t right) {
    steps.step();
    return memory::sortOrder(values[left], values[right]) < 0;
  });
  std::vector<std::uint32_t> ranks(texts.size() + 1);
  for (std::size_t i = 0; i < codes.size(); ++i) ranks[codes[i]] = static_cast<std::uint32_t>(i + 1);
  for (std::uint32_t code = 1; code <= texts.size(); ++code) ranks[code] = ranks[texts.groupOf(code)];
  return ranks;
}

// The values that are not Null, each once, ascending.
std::vector<double> differentValues(const std::vector<double>& reals, const base::Look& look) {
  base::LookCounter steps(look);
  std::vector<double> different;
  std::ranges::copy_if(reals, std::back_inserter(different), [](double real) { return real == real; });
  std::ranges::sort(different, [&](double left, double right) {
    steps.step();
    return left < right;
  });
  different.erase(std::unique(different.begin(), different.end()), different.end());
  return different;
}

// Calls `work` for parts of a range of numbers, and looks before each.
template <typename Work>
void inParts(std::size_t count, const base::Look& look, const Work& work) {
  constexpr std::size_t kPart = std::size_t{1} << 16U;
  for (std::size_t from = 0; from < count; from += kPart) {
    look();
    work(from, std::min(count, from + kPart));
  }
}

}  // namespace

// In the order of the rows.
std::vector<KeyOrder::Ranked> KeyOrder::ranked(const Column& column, const base::Look& look) const {
  std::vector<Ranked> ranked(count_);
  if (column.type() == Type::Double) {
    std::vector<double> reals(count_);
    for (std::size_t i = 0; i < count_; ++i) reals[i] = *column.reals(rowAt(i));
    const std::vector<double> different = differentValues(reals, look);
    inParts(count_, look, [&](std::size_t from, std::size_t end) {
      for (std::size_t i = from; i < end; ++i) {
        const auto place = std::ranges::lower_bound(different, reals[i]) - different.begin();
        const bool null = reals[i] != reals[i];
        ranked[i] = {null ? 0 : static_cast<std::uint32_t>(place) + 1, static_cast<std::uint32_t>(rowAt(i))};
      }
    });
    return ranked;
  }
  const bool text = column.type() == Type::Text;
  const std::vector<std::uint32_t> ofCode = text ? textRanks(*column.texts(), look) : std::vector<std::uint32_t>();
  const auto rankOf = [&](std::int32_t integer) -> std::uint32_t {
    if (text) return ofCode[static_cast<std::size_t>(integer)];
    if (integer == PackedIntegers::kNone) return 0;
    return static_cast<std::uint32_t>(std::int64_t{integer} - column.least() + 1);
  };
  std::vector<std::int32_t> integers(kBlockRows);
  std::size_t from = 0;
  std::size_t behind = 0;  // of the block in `integers`
  inParts(count_, look, [&](std::size_t first, std::size_t end) {
    for (std::size_t i = first; i < end; ++i) {
      const std::size_t row = rowAt(i);
      if (row >= behind) {
        from = row;
        behind = std::min(row + kBlockRows, column.rows());
        column.integers(from, behind - from, integers.data());
      }
      ranked[i] = {rankOf(integers[row - from]), static_cast<std::uint32_t>(row)};
    }
  });
  return ranked;
}

// Equal ones stay as they are: by digits of the rank, the lowest first.
void KeyOrder::sortByRank(std::vector<Ranked>& rows, const base::Look& look) {
  constexpr unsigned kDigit = 11;
  constexpr std::uint32_t kMask = (1U << kDigit) - 1;
  constexpr unsigned kBits = std::numeric_limits<std::uint32_t>::digits;
  if (std::ranges::is_sorted(rows, {}, &Ranked::rank)) return;  // as calls by time are, mostly
  const std::uint32_t greatest = std::ranges::max(rows, {}, &Ranked::rank).rank;
  std::vector<Ranked> moved(rows.size());
  for (unsigned shift = 0; shift < kBits && greatest >> shift != 0; shift += kDigit) {
    std::array<std::size_t, kMask + 2> starts{};
    for (const Ranked& row : rows) ++starts[((row.rank >> shift) & kMask) + 1];
    std::partial_sum(starts.begin(), starts.end(), starts.begin());
    inParts(rows.size(), look, [&](std::size_t from, std::size_t end) {
      for (std::size_t i = from; i < end; ++i) moved[starts[(rows[i].rank >> shift) & kMask]++] = rows[i];
    });
    rows.swap(moved);
  }
}

void KeyOrder::sort(const Column& column, bool descending, const base::Look& look) {
  std::vector<Ranked> sorted = ranked(column, look);
  sortByRank(sorted, look);
  std::vector<std::uint32_t> rows(sorted.size());
  std::ranges::transform(sorted, rows.begin(), &Ranked::row);
  rows_ = std::move(rows);
  descending_ = descending;
}

std::int64_t KeyOrder::key(std::int64_t position) const {
  const std::size_t place = static_cast<std::size_t>(descending_ ? count() - 1 - position : position);
  return keys_->key(rows_ ? (*rows_)[place] : place);
}

std::optional<std::int64_t> KeyOrder::positionOf(std::int64_t key) const {
  const auto row = keys_->rowOf(key);
  if (!row) return std::nullopt;
  std::size_t place = *row;
  if (rows_) {
    const auto found = std::ranges::find(*rows_, static_cast<std::uint32_t>(*row));
    if (found == rows_->end()) return std::nullopt;
    place = static_cast<std::size_t>(found - rows_->begin());
  }
  if (place >= count_) return std::nullopt;
  return descending_ ? count() - 1 - static_cast<std::int64_t>(place) : static_cast<std::int64_t>(place);
}

}  // namespace jet::columns
