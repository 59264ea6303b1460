#include "jet/engine/columns/key_order.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <limits>
#include <memory>
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
    steps.step();
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

// Calls `work` for parts of a range of numbers, and looks before each.
template <typename Work>
void inParts(std::size_t count, const base::Look& look, const Work& work) {
  constexpr std::size_t kPart = std::size_t{1} << 16U;
  for (std::size_t from = 0; from < count; from += kPart) {
    look();
    work(from, std::min(count, from + kPart));
  }
}

// The values that are not Null, each once, ascending.
std::vector<double> differentValues(const double* reals, std::size_t count, const base::Look& look) {
  base::LookCounter steps(look);
  std::vector<double> different;
  different.reserve(count);
  inParts(count, look, [&](std::size_t from, std::size_t end) {
    std::copy_if(reals + from, reals + end, std::back_inserter(different), [](double real) { return real == real; });
  });
  std::ranges::sort(different, [&](double left, double right) {
    steps.step();
    return left < right;
  });
  std::size_t kept = 0;
  inParts(different.size(), look, [&](std::size_t from, std::size_t end) {
    for (std::size_t i = from; i < end; ++i) {
      if (kept == 0 || different[i] != different[kept - 1]) different[kept++] = different[i];
    }
  });
  different.resize(kept);
  return different;
}

}  // namespace

// Some rows, each with the place of its value in the order; equal values share one. Their memory is first touched when
// they are put there: for millions that takes long, and is looked at between.
class KeyOrder::Ranks {
 public:
  struct Ranked {
    std::uint32_t rank;
    std::uint32_t row;
  };
  using Rows = std::unique_ptr<Ranked[]>;

  explicit Ranks(std::size_t count) : count_(count), rows_(newRows()) {}
  void put(std::size_t place, std::uint32_t rank, std::size_t row) {
    if (rank < last_) ascending_ = false;
    last_ = rank;
    greatest_ = std::max(greatest_, rank);
    rows_[place] = {rank, static_cast<std::uint32_t>(row)};
  }
  // As calls by time are, mostly.
  [[nodiscard]] bool ascending() const { return ascending_; }
  [[nodiscard]] std::uint32_t row(std::size_t place) const { return rows_[place].row; }

  // Equal ones stay as they are: by digits of the rank, the lowest first.
  void sort(const base::Look& look) {
    constexpr unsigned kBits = std::numeric_limits<std::uint32_t>::digits;
    Rows moved = newRows();
    for (unsigned shift = 0; shift < kBits && greatest_ >> shift != 0; shift += kDigit) sortBy(shift, moved, look);
  }

 private:
  static constexpr unsigned kDigit = 11;
  static constexpr std::uint32_t kMask = (1U << kDigit) - 1;

  [[nodiscard]] Rows newRows() const { return std::make_unique_for_overwrite<Ranked[]>(count_); }

  void sortBy(unsigned shift, Rows& moved, const base::Look& look) {
    std::array<std::size_t, kMask + 2> starts{};
    inParts(count_, look, [&](std::size_t from, std::size_t end) {
      for (std::size_t i = from; i < end; ++i) ++starts[((rows_[i].rank >> shift) & kMask) + 1];
    });
    std::partial_sum(starts.begin(), starts.end(), starts.begin());
    inParts(count_, look, [&](std::size_t from, std::size_t end) {
      for (std::size_t i = from; i < end; ++i) moved[starts[(rows_[i].rank >> shift) & kMask]++] = rows_[i];
    });
    rows_.swap(moved);
  }

  std::size_t count_;
  Rows rows_;
  std::uint32_t last_ = 0;
  std::uint32_t greatest_ = 0;
  bool ascending_ = true;
};

// In the order of the rows.
KeyOrder::Ranks KeyOrder::ranked(const Column& column, const base::Look& look) const {
  Ranks ranked(count_);
  if (column.type() == Type::Double) {
    const auto reals = std::make_unique_for_overwrite<double[]>(count_);
    inParts(count_, look, [&](std::size_t from, std::size_t end) {
      for (std::size_t i = from; i < end; ++i) reals[i] = *column.reals(rowAt(i));
    });
    const std::vector<double> different = differentValues(reals.get(), count_, look);
    inParts(count_, look, [&](std::size_t from, std::size_t end) {
      for (std::size_t i = from; i < end; ++i) {
        const auto place = std::ranges::lower_bound(different, reals[i]) - different.begin();
        const bool null = reals[i] != reals[i];
        ranked.put(i, null ? 0 : static_cast<std::uint32_t>(place) + 1, rowAt(i));
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
      ranked.put(i, rankOf(integers[row - from]), row);
    }
  });
  return ranked;
}

void KeyOrder::sort(const Column& column, bool descending, const base::Look& look) {
  descending_ = descending;
  Ranks sorted = ranked(column, look);
  if (sorted.ascending()) return;
  sorted.sort(look);
  std::vector<std::uint32_t> rows;
  rows.reserve(count_);
  inParts(count_, look, [&](std::size_t from, std::size_t end) {
    for (std::size_t i = from; i < end; ++i) rows.push_back(sorted.row(i));
  });
  rows_ = std::move(rows);
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
