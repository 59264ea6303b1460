#include "jet/engine/columns/group_sums.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numeric>

#include "base/text.h"
#include "jet/letters.h"

namespace jet::columns {

namespace {

using Grouping = StatisticPlan::Grouping;
using Item = StatisticPlan::Item;

constexpr std::int64_t kNoRow = std::numeric_limits<std::int64_t>::max();

double worked(Operator op, double left, double right) {
  switch (op) {
    case Operator::Multiply:
      return left * right;
    case Operator::Divide:
      return left / right;
    case Operator::Add:
      return left + right;
    default:
      return left - right;
  }
}

Value finite(double number) {
  return std::isfinite(number) ? Value(number) : Value();
}

// Of texts of ASCII, which numbers are: bytes in the same order, many times quicker to compare. Null comes first.
std::optional<std::vector<std::string>> orderedBytes(const std::vector<Value>& values) {
  std::vector<std::string> bytes;
  bytes.reserve(values.size());
  for (const Value& value : values) {
    const bool text = value.type() == Type::Text;
    if (!value.isNull() && (!text || !isAscii(value.text()))) return std::nullopt;
    bytes.push_back(text ? "=" + base::foldAscii(value.text()) : std::string());
  }
  return bytes;
}

// A group with the first of its bytes, which decide nearly always and are at hand while it is sorted.
struct BytesPlace {
  BytesPlace(std::string_view bytes, std::uint32_t ofGroup) : group(ofGroup) {
    for (std::size_t i = 0; i < begin.size(); ++i) {
      std::uint64_t& part = begin[i];
      for (std::size_t byte = i * sizeof part; byte < (i + 1) * sizeof part; ++byte) {
        part = part << 8U | (byte < bytes.size() ? static_cast<unsigned char>(bytes[byte]) : 0U);
      }
    }
  }

  std::array<std::uint64_t, 2> begin{};
  std::uint32_t group;
};

Value textOf(const TextDictionary& texts, std::int32_t code) {
  return code == 0 ? Value() : Value(texts.text(static_cast<std::uint32_t>(code)));
}

}  // namespace

GroupSums::GroupSums(const StatisticPlan& plan, StatisticPlan::Constants constants,
                     std::span<const Column* const> columns)
    : plan_(plan),
      constants_(std::move(constants)),
      columns_(columns),
      part_(plan.grouping().part),
      result_(std::make_shared<StatisticRows>()),
      keys_(kBlockRows),
      groups_(kBlockRows),
      integers_(kBlockRows),
      reals_(kBlockRows) {
  result_->names_ = plan.names();
  result_->items_ = plan.items();
  result_->grouping_ = plan.grouping().kind;
  if (plan.grouping().kind == Grouping::Kind::Text) result_->keyTexts_ = columns[plan.grouping().field]->texts();
  for (const std::size_t field : plan.firsts()) result_->firstTexts_.push_back(columns[field]->texts());
  result_->firsts_.resize(plan.firsts().size());
  shareSums();
  if (plan.grouping().kind == Grouping::Kind::All) newGroup(PackedIntegers::kNone);
}

void GroupSums::shareSums() {
  const std::vector<Operand>& operands = plan_.operands();
  result_->sums_.resize(operands.size());
  for (std::size_t i = 0; i < operands.size(); ++i) {
    const auto equal = [&](const Operand& other) {
      return other.field == operands[i].field &&
             std::ranges::equal(other.steps, operands[i].steps, [this](const auto& left, const auto& right) {
               return left.op == right.op && constants_[left.constant] == constants_[right.constant];
             });
    };
    const auto first = std::find_if(operands.begin(), operands.end(), equal);
    result_->sumOf_.push_back(static_cast<std::size_t>(first - operands.begin()));
    result_->whole_.push_back(columns_[operands[i].field]->type() == Type::Long);
  }
}

std::uint32_t GroupSums::newGroup(std::int32_t key) {
  result_->groups_.push_back({kNoRow, key, 0});
  for (auto& sums : result_->sums_) sums.emplace_back();
  for (auto& first : result_->firsts_) first.push_back(0);
  return static_cast<std::uint32_t>(result_->groups_.size() - 1);
}

std::uint32_t GroupSums::groupOf(std::int32_t key) {
  const auto [place, added] = groupOfNumber_.try_emplace(key, 0);
  if (added) place->second = newGroup(key);
  return place->second;
}

std::uint32_t GroupSums::groupOfText(std::int32_t code) {
  const TextDictionary& texts = *columns_[plan_.grouping().field]->texts();
  if (groupOfCode_.size() <= texts.size()) groupOfCode_.resize(texts.size() + 1);
  const std::uint32_t shared = code == 0 ? 0 : texts.groupOf(static_cast<std::uint32_t>(code));
  std::uint32_t& group = groupOfCode_[shared];
  if (group == 0) group = newGroup(code) + 1;
  return group - 1;
}

void GroupSums::add(const ColumnSource::Part& part) {
  const std::uint32_t place = plan_.grouping().kind == Grouping::Kind::Text ? groupOfText(part.key) : groupOf(part.key);
  StatisticRows::Group& group = result_->groups_[place];
  group.rows += part.rows;
  if (part.firstRow < group.firstRow) {
    group.firstRow = part.firstRow;
    group.key = part.key;
  }
  const std::vector<std::size_t>& sumOf = result_->sumOf_;
  for (std::size_t operand = 0; operand < sumOf.size(); ++operand) {
    if (sumOf[operand] != operand) continue;
    const PartSum& added = part.sums[operand];
    PartSum& sum = result_->sums_[operand][place];
    sum.real += added.real;
    sum.whole += added.whole;
    // Of operands that come to the same, one may be counted and another only summed.
    std::int64_t values = added.values;
    for (std::size_t other = operand + 1; other < sumOf.size(); ++other) {
      if (sumOf[other] == operand) values = std::max(values, part.sums[other].values);
    }
    sum.values += values;
  }
}

void GroupSums::add(std::size_t from, std::size_t count, std::span<const std::uint32_t> rows,
                    std::span<const std::int64_t> keys) {
  if (rows.empty()) return;
  findGroups(from, count, rows);
  noteRows(from, count, rows, keys);
  for (std::size_t operand = 0; operand < plan_.operands().size(); ++operand) {
    if (result_->sumOf_[operand] != operand) continue;
    if (result_->whole_[operand]) {
      addWhole(operand, from, count, rows);
    } else {
      addReal(operand, from, rows);
    }
  }
}

// Fills groups_, a group a row.
void GroupSums::findGroups(std::size_t from, std::size_t count, std::span<const std::uint32_t> rows) {
  const Grouping& grouping = plan_.grouping();
  if (grouping.kind == Grouping::Kind::All) {
    std::fill_n(groups_.begin(), rows.size(), 0U);
    return;
  }
  const Column& column = *columns_[grouping.field];
  column.integers(from, count, keys_.data());
  if (grouping.kind == Grouping::Kind::Text) {
    for (std::size_t i = 0; i < rows.size(); ++i) groups_[i] = groupOfText(keys_[rows[i]]);
    return;
  }
  std::int32_t last = 0;
  std::uint32_t group = std::numeric_limits<std::uint32_t>::max();
  for (std::size_t i = 0; i < rows.size(); ++i) {
    std::int32_t& key = keys_[rows[i]];
    if (grouping.kind == Grouping::Kind::Part && key != PackedIntegers::kNone) key = part_.read(key);
    if (key != last || group == std::numeric_limits<std::uint32_t>::max()) group = groupOf(key);
    last = key;
    groups_[i] = group;
  }
}

// What a group shows besides sums comes from its row with the lowest key.
void GroupSums::noteRows(std::size_t from, std::size_t count, std::span<const std::uint32_t> rows,
                         std::span<const std::int64_t> keys) {
  std::vector<StatisticRows::Group>& groups = result_->groups_;
  std::vector<std::uint32_t> leading;  // places in `rows`
  for (std::size_t i = 0; i < rows.size(); ++i) {
    StatisticRows::Group& group = groups[groups_[i]];
    ++group.rows;
    const std::int64_t row = keys.empty() ? static_cast<std::int64_t>(from + rows[i]) : keys[rows[i]];
    if (row >= group.firstRow) continue;
    group.firstRow = row;
    group.key = keys_[rows[i]];
    leading.push_back(static_cast<std::uint32_t>(i));
  }
  if (leading.empty()) return;
  for (std::size_t first = 0; first < plan_.firsts().size(); ++first) {
    columns_[plan_.firsts()[first]]->integers(from, count, integers_.data());
    // A later one has the lower key.
    for (const std::uint32_t i : leading) result_->firsts_[first][groups_[i]] = integers_[rows[i]];
  }
}

void GroupSums::addWhole(std::size_t operand, std::size_t from, std::size_t count,
                         std::span<const std::uint32_t> rows) {
  columns_[plan_.operands()[operand].field]->integers(from, count, integers_.data());
  std::vector<PartSum>& sums = result_->sums_[operand];
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const std::int32_t value = integers_[rows[i]];
    if (value == PackedIntegers::kNone) continue;
    PartSum& sum = sums[groups_[i]];
    sum.whole += value;
    ++sum.values;
  }
}

void GroupSums::addReal(std::size_t operand, std::size_t from, std::span<const std::uint32_t> rows) {
  const Operand& read = plan_.operands()[operand];
  const double* const cells = columns_[read.field]->reals(from);
  for (std::size_t i = 0; i < rows.size(); ++i) reals_[i] = cells[rows[i]];
  for (const Operand::Step& step : read.steps) {
    const double constant = constants_[step.constant];
    for (std::size_t i = 0; i < rows.size(); ++i) reals_[i] = worked(step.op, reals_[i], constant);
  }
  std::vector<PartSum>& sums = result_->sums_[operand];
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (!std::isfinite(reals_[i])) continue;  // Null, or a product too large, which is Null as well
    PartSum& sum = sums[groups_[i]];
    sum.real += reals_[i];
    ++sum.values;
  }
}

std::shared_ptr<const StatisticRows> GroupSums::finish(const base::Look& look, RowReader firsts) {
  if (!plan_.firsts().empty()) result_->readsFirsts_ = std::move(firsts);
  result_->sort(plan_.order(), look);
  return result_;
}

Value StatisticRows::keyOf(std::size_t group) const {
  const std::int32_t key = groups_[group].key;
  if (grouping_ == Grouping::Kind::Text) return textOf(*keyTexts_, key);
  return key == PackedIntegers::kNone ? Value() : Value(static_cast<std::int64_t>(key));
}

Value StatisticRows::cell(const Item& item, std::size_t group) const {
  switch (item.kind) {
    case Item::Kind::Key:
      return keyOf(group);
    case Item::Kind::Rows:
      return Value(groups_[group].rows);
    case Item::Kind::First:
      if (readsFirsts_) return readFirsts_.at(static_cast<std::uint32_t>(group))[item.index];
      return textOf(*firstTexts_[item.index], firsts_[item.index][group]);
    default:
      break;
  }
  const PartSum& sum = sums_[sumOf_[item.index]][group];
  if (item.kind == Item::Kind::Count) return Value(sum.values);
  if (sum.values == 0) return {};
  const bool whole = whole_[item.index];
  if (item.kind == Item::Kind::Sum) return whole ? Value(sum.whole) : finite(sum.real);
  return finite((whole ? static_cast<double>(sum.whole) : sum.real) / static_cast<double>(sum.values));
}

// Of those that were not read before.
void StatisticRows::readFirsts(std::span<const std::uint32_t> groups) const {
  constexpr std::size_t kMost = 10'000;  // in one question
  std::vector<std::uint32_t> missing;
  std::vector<std::int64_t> keys;
  const auto read = [&] {
    const std::vector<Value> cells = keys.empty() ? std::vector<Value>() : readsFirsts_(keys);
    const std::size_t width = firsts_.size();
    for (std::size_t i = 0; i < missing.size(); ++i) {
      const auto first = cells.begin() + static_cast<std::ptrdiff_t>(i * width);
      readFirsts_.emplace(missing[i], std::vector<Value>(first, first + static_cast<std::ptrdiff_t>(width)));
    }
    missing.clear();
    keys.clear();
  };
  for (const std::uint32_t group : groups) {
    if (readFirsts_.contains(group)) continue;
    missing.push_back(group);
    keys.push_back(groups_[group].firstRow);
    if (missing.size() == kMost) read();
  }
  read();
}

void StatisticRows::readFirsts() const {
  if (readsFirsts_) readFirsts(order_);
}

void StatisticRows::append(std::size_t row, std::vector<Value>& cells) const {
  constexpr std::size_t kTogether = 256;  // some screens
  if (readsFirsts_ && !readFirsts_.contains(order_[row])) {
    readFirsts(std::span(order_).subspan(row, std::min(kTogether, order_.size() - row)));
  }
  for (const Item& item : items_) cells.push_back(cell(item, order_[row]));
}

std::shared_ptr<const ResultTable> StatisticRows::table() const {
  auto table = std::make_shared<ResultTable>();
  table->columns = names_;
  table->rows = count();
  readFirsts();
  table->cells.reserve(count() * items_.size());
  for (std::size_t row = 0; row < count(); ++row) append(row, table->cells);
  return table;
}

// The database hands groups out in the order of their keys, downwards if the only term of the order is, and keeps that
// order among rows that are equal otherwise.
void StatisticRows::sort(const std::vector<StatisticPlan::Order>& order, const base::Look& look) {
  order_.resize(groups_.size());
  std::iota(order_.begin(), order_.end(), 0U);
  sortBy({Item::Kind::Key, 0}, order.size() == 1 && order.front().descending, look);
  for (auto term = order.rbegin(); term != order.rend(); ++term) sortBy(items_[term->item], term->descending, look);
}

void StatisticRows::sortBy(const Item& item, bool descending, const base::Look& look) {
  if (item.kind == Item::Kind::First) readFirsts();
  base::LookCounter steps(look);
  std::vector<Value> values;
  values.reserve(groups_.size());
  for (std::size_t group = 0; group < groups_.size(); ++group) values.push_back(cell(item, group));
  const auto sort = [&](auto& places, const auto& compared) {
    std::stable_sort(places.begin(), places.end(), [&](const auto& left, const auto& right) {
      steps.step();
      const int found = compared(left, right);
      return descending ? found > 0 : found < 0;
    });
  };
  const auto bytes = orderedBytes(values);
  if (!bytes) {
    return sort(order_, [&](std::uint32_t left, std::uint32_t right) {
      return memory::sortOrder(values[left], values[right]);
    });
  }
  std::vector<BytesPlace> places;
  places.reserve(order_.size());
  for (const std::uint32_t group : order_) places.emplace_back((*bytes)[group], group);
  sort(places, [&](const BytesPlace& left, const BytesPlace& right) {
    if (left.begin != right.begin) return left.begin < right.begin ? -1 : 1;
    return (*bytes)[left.group].compare((*bytes)[right.group]);
  });
  std::ranges::transform(places, order_.begin(), &BytesPlace::group);
}

}  // namespace jet::columns
