#include "jet/engine/windows.h"

#include <algorithm>
#include <unordered_map>

namespace jet::engine {

namespace {

// Of pages seen, one row in this many is kept as a place to start from.
constexpr std::int64_t kAnchorSpacing = 1000;
// The driver is asked for a place to start from when more rows would be passed.
constexpr std::int64_t kManyPassed = 16'384;
// Rows at an end of a list that a server is asked for together.
constexpr std::int64_t kEnd = 2'000;
// The same while no more are wanted, where the server finds them by an index: it looks at as many rows as are asked
// for, and at those between that do not meet the condition.
constexpr std::int64_t kShortEnd = 200;

}  // namespace

KeyedWindow::KeyedWindow(Engine& engine, ShapedText text)
    : engine_(engine),
      text_(std::move(text)),
      bound_(engine_.statements().bound(text_)),
      orderItems_(bound_->statement.orderBy.size()) {
  for (const bind::BoundItem& item : bound_->statement.items) columns_.push_back(item.name);
}

void KeyedWindow::refresh() {
  engine_.versions().refresh();
  bound_ = engine_.statements().bound(text_);
  count_.reset();
  order_.reset();
  anchors_.clear();
  head_ = {};
  tail_ = {};
}

std::int64_t KeyedWindow::rowCount() {
  // Rows that are found in memory are counted by finding them, for the rows that are asked for next. A server counts
  // before their columns are there.
  if (!count_ && !order_ && bound_->statement.where && !engine_.driver().isServer()) static_cast<void>(order());
  if (!count_ && order_ && *order_) count_ = (*order_)->count();
  if (count_) return *count_;
  count_ = engine_.statistics().count(text_, bound_);
  if (!count_) {
    Execution count = engine_.statements().open(Role::Count, text_);
    count.step();
    count_ = count.key();
  }
  if (*count_ > kManyPassed) lookForPlaces();
  return *count_;
}

// So that the driver has some by the time somebody jumps.
void KeyedWindow::lookForPlaces() {
  if (orderItems_ == 1) static_cast<void>(engine_.statements().placeBefore(text_, 0));
}

std::vector<std::int64_t> KeyedWindow::run(Role role, std::initializer_list<std::int64_t> extras) {
  std::vector<std::int64_t> keys;
  Execution page = engine_.statements().open(role, text_, nullptr, extras);
  while (page.step()) keys.push_back(page.key());
  return keys;
}

const columns::KeyOrder* KeyedWindow::order() {
  if (!order_) order_ = engine_.statistics().keyOrder(text_, bound_);
  return order_->get();
}

std::vector<std::int64_t> KeyedWindow::keys(std::int64_t first, std::int64_t count) {
  // The first screen in the order of keys needs none: it need not wait for the number of calls.
  const bool known = order_ && *order_;
  if (first == 0 && orderItems_ == 0 && !known) return fetchKeys(first, count);
  if (auto found = keysAtAnEnd(first, count)) return *found;
  if (order() == nullptr) return fetchKeys(first, count);
  std::vector<std::int64_t> keys;
  const std::int64_t end = first + std::min(order()->count() - first, count);
  for (std::int64_t position = first; position < end; ++position) keys.push_back(order()->key(position));
  return keys;
}

bool KeyedWindow::walksAnIndex() const {
  const bind::BoundExpression& order = bound_->statement.orderBy.front().expression;
  const TableDef& table = bound_->statement.table();
  return orderItems_ == 1 && order.isColumn() && table.leadsAFullIndex(table.fields[order.index].name);
}

// A server finds the first rows of an order that it has no index for in a fourth of the time that reading the column
// takes, and some screens of them in the same time as one.
std::optional<std::vector<std::int64_t>> KeyedWindow::keysAtAnEnd(std::int64_t first, std::int64_t count) {
  if (order_ || orderItems_ == 0 || !engine_.driver().isServer()) return std::nullopt;
  std::int64_t from = first;
  const bool atHead = first <= kEnd && count <= kEnd - first;
  if (!atHead) {
    // Rows of a condition are counted by columns.
    if (bound_->statement.where && !count_) return std::nullopt;
    count = std::min(count, rowCount() - first);
    from = rowCount() - first - count;
    if (count <= 0 || from + count > kEnd) return std::nullopt;
  }
  End& end = atHead ? head_ : tail_;
  const std::int64_t wanted = from + count <= kShortEnd && walksAnIndex() ? kShortEnd : kEnd;
  if (end.asked < wanted) {
    const bool none = head_.asked == 0 && tail_.asked == 0;
    if (none && !engine_.statistics().leavesEnds(text_, bound_)) return std::nullopt;
    end = {run(atHead ? Role::KeysPage : Role::KeysPageBack, {wanted, 0}), wanted};
  }
  const auto size = static_cast<std::int64_t>(end.keys.size());
  const auto begin = end.keys.begin() + std::min(from, size);
  std::vector<std::int64_t> keys(begin, end.keys.begin() + std::min(from + count, size));
  if (!atHead) std::ranges::reverse(keys);
  return keys;
}

// Skipping costs time for each row skipped, so a page is reached from the nearest known place: the start, the end, or a
// row seen before. The first page is read without counting any.
std::vector<std::int64_t> KeyedWindow::fetchKeys(std::int64_t first, std::int64_t count) {
  if (first == 0) return run(Role::KeysPage, {count, 0});
  const std::int64_t total = rowCount();
  count = std::min(count, total - first);
  if (count <= 0) return {};
  if (auto found = keysByAnchor(first, count)) return *found;
  const std::int64_t behind = total - first - count;
  std::vector<std::int64_t> keys =
      behind < first ? run(Role::KeysPageBack, {count, behind}) : run(Role::KeysPage, {count, first});
  if (behind < first) std::reverse(keys.begin(), keys.end());
  return keys;
}

// Nothing when no anchor is nearer than both ends, or when rows before or after it are missing by now.
std::optional<std::vector<std::int64_t>> KeyedWindow::keysByAnchor(std::int64_t first, std::int64_t count) {
  if (orderItems_ > 1) return std::nullopt;
  const Place* best = nullptr;
  std::int64_t distance = std::min(first, rowCount() - first - count);
  const auto consider = [&](const Place& anchor) {
    const std::int64_t skip = anchor.position <= first ? first - anchor.position : anchor.position - first - count;
    if (skip < 0 || skip >= distance) return;
    distance = skip;
    best = &anchor;
  };
  auto behind = anchors_.upper_bound(first / kAnchorSpacing);
  for (int i = 0; i < 2 && behind != anchors_.end(); ++i, ++behind) consider(behind->second);
  auto before = anchors_.upper_bound(first / kAnchorSpacing);
  for (int i = 0; i < 2 && before != anchors_.begin(); ++i) consider((--before)->second);
  std::optional<Place> known;
  if (distance > kManyPassed) known = engine_.statements().placeBefore(text_, first);
  if (known) consider(*known);
  if (best == nullptr) return std::nullopt;
  const bool back = best->position > first;
  std::vector<std::int64_t> keys = run(back ? Role::KeysBefore : Role::KeysFrom, {best->key, count, distance});
  if (static_cast<std::int64_t>(keys.size()) != count) return std::nullopt;
  if (back) std::reverse(keys.begin(), keys.end());
  return keys;
}

void KeyedWindow::keepAnchor(std::int64_t position, std::int64_t key) {
  anchors_.insert_or_assign(position / kAnchorSpacing, Place{position, key});
}

Snapshot KeyedWindow::rows(std::int64_t first, std::int64_t count) {
  auto table = std::make_shared<ResultTable>();
  table->columns = std::make_shared<const std::vector<std::string>>(columns_);
  if (first >= 0 && count > 0) {
    const std::vector<std::int64_t> page = keys(first, count);
    if (!page.empty()) keepAnchor(first, page.front());
    table->rows = page.size();
    table->cells.resize(page.size() * columns_.size());
    readRows(page, table->cells);
  }
  return Snapshot(std::move(table));
}

// A row deleted since keeps its place, empty, until the next refresh.
void KeyedWindow::readRows(const std::vector<std::int64_t>& keys, std::vector<Value>& cells) {
  const auto take = [&](const Execution& read, std::size_t row) {
    const std::size_t width = std::min(columns_.size(), read.width());
    for (std::size_t i = 0; i < width; ++i) cells[row * columns_.size() + i] = read.value(i);
  };
  if (engine_.driver().isServer()) {
    std::unordered_map<std::int64_t, std::size_t> places;
    for (std::size_t row = 0; row < keys.size(); ++row) places.emplace(keys[row], row);
    Execution read = engine_.statements().openWith(Role::ReadEach, text_, nullptr, keys);
    while (read.step()) take(read, places.at(read.key()));
    return;
  }
  for (std::size_t row = 0; row < keys.size(); ++row) {
    Execution read = engine_.statements().open(Role::Read, text_, nullptr, {keys[row]});
    if (read.step()) take(read, row);
  }
}

std::optional<std::int64_t> KeyedWindow::find(std::string_view criteria) {
  const ShapedText shaped(criteria);
  std::int64_t key = 0;
  {
    Execution find = engine_.statements().open(Role::FindFirst, text_, &shaped);
    if (!find.step()) return std::nullopt;
    key = find.key();
  }
  if (const columns::KeyOrder* const known = order()) return known->positionOf(key);
  if (orderItems_ == 0) {
    Execution before = engine_.statements().open(Role::CountBefore, text_, nullptr, {key});
    before.step();
    return before.key();
  }
  if (const auto position = engine_.statements().positionOf(text_, key)) return position;
  Execution keys = engine_.statements().open(Role::OrderedKeys, text_);
  for (std::int64_t position = 0; keys.step(); ++position) {
    if (keys.key() == key) return position;
  }
  return std::nullopt;
}

}  // namespace jet::engine
