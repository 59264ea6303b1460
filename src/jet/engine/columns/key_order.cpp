#include "jet/engine/columns/key_order.h"

#include <algorithm>
#include <numeric>

#include "jet/engine/columns/row_filter.h"
#include "jet/engine/memory/evaluator.h"

namespace jet::columns {

namespace {

// By code, the place of its text in the order of all; 0 for Null. Texts that are equal under folding share one.
std::vector<std::uint32_t> textRanks(const TextDictionary& texts) {
  std::vector<std::uint32_t> codes;
  std::vector<Value> values(texts.size() + 1);
  for (std::uint32_t code = 1; code <= texts.size(); ++code) {
    if (texts.groupOf(code) != code) continue;
    codes.push_back(code);
    values[code] = Value(texts.text(code));
  }
  std::ranges::sort(codes, [&](std::uint32_t left, std::uint32_t right) {
    return memory::sortOrder(values[left], values[right]) < 0;
  });
  std::vector<std::uint32_t> ranks(texts.size() + 1);
  for (std::size_t i = 0; i < codes.size(); ++i) ranks[codes[i]] = static_cast<std::uint32_t>(i + 1);
  for (std::uint32_t code = 1; code <= texts.size(); ++code) ranks[code] = ranks[texts.groupOf(code)];
  return ranks;
}

std::vector<std::uint32_t> realRanks(const std::vector<double>& reals) {
  std::vector<double> different;
  std::ranges::copy_if(reals, std::back_inserter(different), [](double real) { return real == real; });
  std::ranges::sort(different);
  different.erase(std::unique(different.begin(), different.end()), different.end());
  std::vector<std::uint32_t> ranks(reals.size());
  std::ranges::transform(reals, ranks.begin(), [&](double real) {
    return real != real ? 0
                        : static_cast<std::uint32_t>(std::ranges::lower_bound(different, real) - different.begin()) + 1;
  });
  return ranks;
}

// The places of the ranks in ascending order, equal ones as they are: sorted by halves of the number, the lower
// first.
std::vector<std::uint32_t> placesInOrder(const std::vector<std::uint32_t>& ranks) {
  constexpr unsigned kHalf = 16;
  constexpr std::uint32_t kMask = (1U << kHalf) - 1;
  std::vector<std::uint32_t> places(ranks.size());
  std::iota(places.begin(), places.end(), 0U);
  std::vector<std::uint32_t> moved(ranks.size());
  const std::uint32_t greatest = ranks.empty() ? 0 : *std::ranges::max_element(ranks);
  for (unsigned shift = 0; shift <= kHalf && greatest >> shift != 0; shift += kHalf) {
    std::vector<std::size_t> starts(kMask + 2);
    for (const std::uint32_t rank : ranks) ++starts[((rank >> shift) & kMask) + 1];
    std::partial_sum(starts.begin(), starts.end(), starts.begin());
    for (const std::uint32_t place : places) moved[starts[(ranks[place] >> shift) & kMask]++] = place;
    places.swap(moved);
  }
  return places;
}

}  // namespace

// Of the rows, in their order.
std::vector<std::uint32_t> KeyOrder::ranks(const Column& column) const {
  const auto rowAt = [this](std::size_t place) { return rows_ ? (*rows_)[place] : place; };
  if (column.type() == Type::Double) {
    std::vector<double> reals(count_);
    for (std::size_t i = 0; i < count_; ++i) reals[i] = *column.reals(rowAt(i));
    return realRanks(reals);
  }
  const bool text = column.type() == Type::Text;
  const std::vector<std::uint32_t> ofCode = text ? textRanks(*column.texts()) : std::vector<std::uint32_t>();
  const auto rankOf = [&](std::int32_t integer) -> std::uint32_t {
    if (text) return ofCode[static_cast<std::size_t>(integer)];
    if (integer == PackedIntegers::kNone) return 0;
    return static_cast<std::uint32_t>(std::int64_t{integer} - column.least() + 1);
  };
  std::vector<std::uint32_t> ranks(count_);
  std::vector<std::int32_t> integers(kBlockRows);
  std::size_t from = 0;
  std::size_t behind = 0;  // of the block in `integers`
  for (std::size_t i = 0; i < count_; ++i) {
    const std::size_t row = rowAt(i);
    if (row >= behind) {
      from = row;
      behind = std::min(row + kBlockRows, column.rows());
      column.integers(from, behind - from, integers.data());
    }
    ranks[i] = rankOf(integers[row - from]);
  }
  return ranks;
}

void KeyOrder::sort(const Column& column, bool descending) {
  std::vector<std::uint32_t> places = placesInOrder(ranks(column));
  if (rows_) std::ranges::transform(places, places.begin(), [this](std::uint32_t place) { return (*rows_)[place]; });
  rows_ = std::move(places);
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
