#pragma once

#include <algorithm>
#include <deque>
#include <map>
#include <string>
#include <vector>

#include "base/text.h"
#include "jet/engine/columns/statistic_plan.h"
#include "jet/engine/driver.h"
#include "jet/engine/memory/evaluator.h"
#include "jet/error.h"

namespace jet::test {

using engine::Role, engine::RowKey;
constexpr int kNotDone = 3000;  // number of the error for what the fake driver cannot do

struct FakeRow {
  RowKey key = 0;
  std::vector<Value> cells;
};

struct FakeTable {
  bind::TableDefPtr def;
  std::map<RowKey, std::vector<Value>> rows;
  RowKey lastKey = 0;

  RowKey add(std::vector<Value> cells) {
    ++lastKey;
    for (std::size_t i = 0; i < cells.size(); ++i) {
      if (def->fields[i].autoIncrement) cells[i] = Value(lastKey);
    }
    rows.emplace(lastKey, std::move(cells));
    return lastKey;
  }
};
using FakeTables = std::map<std::string, FakeTable>;  // by folded name

// Hands out rows that are given, or that find() finds when it is first stepped.
class FoundRows : public engine::Query {
 public:
  explicit FoundRows(std::vector<FakeRow> rows = {}) : rows_(std::move(rows)) {}
  void bind(const engine::Arguments& arguments) override {
    arguments_ = arguments;
    extras_.assign(arguments.extras.begin(), arguments.extras.end());
    reset();
  }
  bool step() override {
    if (next_ == 0) find();
    stored_.clear();
    return next_++ < rows_.size();
  }
  [[nodiscard]] RowKey key() const override { return rows_[next_ - 1].key; }
  [[nodiscard]] engine::Cell cell(std::size_t item) const override {
    using Kind = engine::Cell::Kind;
    const Value& value = rows_[next_ - 1].cells[item];
    if (value.isNull()) return {};
    if (value.type() == Type::Long) return {.kind = Kind::Integer, .integer = value.integer()};
    if (value.type() == Type::Boolean) return {.kind = Kind::Integer, .integer = value.boolean()};
    if (value.type() == Type::Double) return {.kind = Kind::Real, .real = value.number()};
    if (value.type() == Type::Text) return {.kind = Kind::Text, .text = value.text()};
    stored_.push_back(value.dateTime().stored());
    return {.kind = Kind::Text, .text = stored_.back()};
  }
  [[nodiscard]] std::int64_t changed() const override { return changed_; }
  [[nodiscard]] std::int64_t work() const override { return std::ssize(rows_); }
  void reset() noexcept override { next_ = 0; }
  [[nodiscard]] bool usable() override { return true; }

 protected:
  virtual void find() {}

  engine::Arguments arguments_;
  std::vector<std::int64_t> extras_;
  std::vector<FakeRow> rows_;
  std::int64_t changed_ = 0;

 private:
  std::size_t next_ = 0;                    // one more than the row at hand
  mutable std::deque<std::string> stored_;  // dates of the row as texts
};

class FakeQuery final : public FoundRows {
 public:
  FakeQuery(FakeTables& tables, const engine::QueryRequest& request)
      : tables_(tables), role_(request.role), query_(*request.query), statement_(query_.statement) {
    const bool rows = statement_.readsOneTable() && (!statement_.grouped || role_ == Role::Operands);
    if (!rows) throw Error(kNotDone, "The fake driver reads rows of one table.");
  }

 private:
  FakeTable& table() { return tables_.at(base::foldAscii(statement_.table().name)); }
  [[nodiscard]] bool isRole(std::initializer_list<Role> roles) const { return std::ranges::count(roles, role_) > 0; }
  [[nodiscard]] bool isWholeSelect() const { return isRole({Role::Run, Role::Among}); }

  void find() override {
    evaluator_.beginConverted(query_, arguments_.literals);
    if (statement_.kind != Statement::Kind::Select) return change();
    rows_.clear();
    for (const auto& [key, cells] : table().rows) {
      if (isWanted(key, cells)) rows_.push_back({key, cells});
    }
    sort();
    if (isRole({Role::PreviousKeys, Role::KeysPageBack, Role::KeysBefore})) std::ranges::reverse(rows_);
    if (isRole({Role::Count, Role::CountBefore})) return rows_.assign(1, {std::ssize(rows_), {}});
    if (!isWholeSelect()) cut();
    for (FakeRow& row : rows_) row.cells = shown(row);
    if (isWholeSelect()) cutSelect();
  }

  bool holds(const std::optional<bind::BoundExpression>& condition, const std::vector<Value>& cells) {
    evaluator_.setRow(cells.data());
    return !condition || evaluator_.holds(*condition);
  }

  bool isWanted(RowKey key, const std::vector<Value>& cells) {
    if (isRole({Role::Read, Role::ReadMatching}) && key != extras_[0]) return false;
    if (isRole({Role::NextKeys, Role::FindNext}) && key <= extras_[0]) return false;
    if (isRole({Role::PreviousKeys, Role::CountBefore}) && key >= extras_[0]) return false;
    if (role_ == Role::Among && std::ranges::find(extras_, key) == extras_.end()) return false;
    return role_ == Role::Read || (holds(statement_.where, cells) && holds(query_.criteria, cells));
  }

  // Rows that are equal follow by key, for windows in the direction of the last item.
  void sort() {
    if (isRole({Role::NextKeys, Role::PreviousKeys, Role::FindNext}) || statement_.orderBy.empty()) return;
    if (!isWholeSelect() && statement_.orderBy.back().descending) std::ranges::reverse(rows_);
    std::ranges::stable_sort(rows_, [this](const FakeRow& left, const FakeRow& right) {
      for (const bind::BoundOrder& term : statement_.orderBy) {
        evaluator_.setRow(left.cells.data());
        const Value first = evaluator_.value(term.expression);
        evaluator_.setRow(right.cells.data());
        const int order = memory::sortOrder(first, evaluator_.value(term.expression));
        if (order != 0) return (order < 0) != term.descending;
      }
      return false;
    });
  }

  void cut() {
    RowKey skip = 0;
    RowKey most = std::ssize(rows_);
    if (isRole({Role::FindFirst, Role::FindNext})) most = 1;
    if (isRole({Role::NextKeys, Role::PreviousKeys, Role::KeysFrom, Role::KeysBefore})) most = extras_[1];
    if (isRole({Role::KeysPage, Role::KeysPageBack})) most = extras_[0], skip = extras_[1];
    if (isRole({Role::KeysFrom, Role::KeysBefore})) {
      skip = std::ranges::find(rows_, extras_[0], &FakeRow::key) - rows_.begin() + extras_[2];
      if (role_ == Role::KeysBefore) ++skip;
    }
    rows_.erase(rows_.begin(), rows_.begin() + std::min(skip, std::ssize(rows_)));
    rows_.resize(std::min(rows_.size(), static_cast<std::size_t>(most)));
  }

  void cutSelect() {
    std::vector<FakeRow> kept;
    const auto equal = [](const Value& a, const Value& b) { return memory::sortOrder(a, b) == 0; };
    for (FakeRow& row : rows_) {
      const auto same = [&](const FakeRow& other) { return std::ranges::equal(row.cells, other.cells, equal); };
      if (!statement_.distinct || std::ranges::none_of(kept, same)) kept.push_back(std::move(row));
    }
    kept.resize(std::min(kept.size(), statement_.top.value_or(kept.size())));
    rows_ = std::move(kept);
  }

  std::vector<Value> shown(const FakeRow& row) {
    std::vector<Value> cells;
    if (role_ == Role::Operands) {
      for (const std::size_t field : columns::namedFields(statement_)) cells.push_back(row.cells[field]);
      return cells;
    }
    evaluator_.setRow(row.cells.data());
    for (const bind::BoundItem& item : statement_.items) cells.push_back(evaluator_.value(item.expression));
    return cells;
  }

  std::vector<Value> assigned(const std::vector<Value>& before) {
    std::vector<Value> cells = before;
    evaluator_.setRow(before.data());
    for (const bind::BoundAssignment& each : statement_.assignments) cells[each.field] = evaluator_.value(each.value);
    return cells;
  }

  void change() {
    changed_ = statement_.kind == Statement::Kind::Insert ? 1 : 0;
    if (changed_ > 0) return void(table().add(assigned(std::vector<Value>(statement_.table().fields.size()))));
    std::map<RowKey, std::vector<Value>> rows;  // a fault leaves all as it was
    for (const auto& [key, cells] : table().rows) {
      const bool wanted = holds(statement_.where, cells);
      changed_ += wanted ? 1 : 0;
      if (wanted && statement_.kind == Statement::Kind::Delete) continue;
      rows.emplace(key, wanted ? assigned(cells) : cells);
    }
    table().rows = std::move(rows);
  }

  FakeTables& tables_;
  Role role_;
  const bind::BoundQuery& query_;
  const bind::BoundStatement& statement_;
  memory::Evaluator evaluator_;
};

class FakeChange final : public engine::RowChange {
 public:
  enum class Kind { Insert, Update, Remove };
  FakeChange(FakeTables& tables, Kind kind, const TableDef& table, std::span<const std::size_t> fields)
      : tables_(tables), kind_(kind), name_(base::foldAscii(table.name)), fields_(fields.begin(), fields.end()) {}
  std::int64_t run(RowKey key, std::span<const Value* const> values) override {
    FakeTable& table = tables_.at(name_);
    if (kind_ == Kind::Remove) return static_cast<std::int64_t>(table.rows.erase(key));
    if (kind_ == Kind::Insert) key = table.add(std::vector<Value>(table.def->fields.size()));
    const auto row = table.rows.find(key);
    if (row == table.rows.end()) return 0;
    for (std::size_t i = 0; i < fields_.size(); ++i) row->second[fields_[i]] = *values[i];
    return kind_ == Kind::Insert ? key : 1;
  }

 private:
  FakeTables& tables_;
  Kind kind_;
  std::string name_;
  std::vector<std::size_t> fields_;
};

// A driver that keeps its tables in memory and knows no SQL: what it evaluates are the bound trees that it is given. It
// joins and groups nothing (Error kNotDone).
class FakeDriver : public engine::Driver {
 public:
  using Fields = std::span<const std::size_t>;
  [[nodiscard]] bool readOnly() const override { return false; }
  [[nodiscard]] std::string describe() const override { return "the test's tables"; }
  bind::TableDefPtr definition(std::string_view table) override {
    const auto found = tables_.find(base::foldAscii(table));
    return found == tables_.end() ? nullptr : found->second.def;
  }
  std::vector<std::string> tableNames() override { return {}; }
  void createTable(const TableDef& table) override {
    tableOf(table).def = std::make_shared<const TableDef>(table);
    ++generation_;
  }
  void upgradeTable(const TableDef&) override {}
  [[nodiscard]] std::uint64_t generation() const override { return generation_; }
  std::unique_ptr<engine::Query> prepare(const engine::QueryRequest& request) override {
    return std::make_unique<FakeQuery>(tables_, request);
  }
  std::unique_ptr<engine::Query> scan(const TableDef& table, Fields fields, engine::KeyRange range) override {
    std::vector<FakeRow> rows;
    for (const auto& [key, cells] : tableOf(table).rows) {
      if (key <= range.behind || key > range.last) continue;
      rows.push_back({key, {}});
      for (const std::size_t field : fields) rows.back().cells.push_back(cells[field]);
    }
    return std::make_unique<FoundRows>(std::move(rows));
  }
  std::unique_ptr<engine::RowChange> prepareInsert(const TableDef& table, Fields fields) override {
    return std::make_unique<FakeChange>(tables_, FakeChange::Kind::Insert, table, fields);
  }
  std::unique_ptr<engine::RowChange> prepareUpdate(const TableDef& table, Fields fields) override {
    return std::make_unique<FakeChange>(tables_, FakeChange::Kind::Update, table, fields);
  }
  std::unique_ptr<engine::RowChange> prepareRemove(const TableDef& table) override {
    return std::make_unique<FakeChange>(tables_, FakeChange::Kind::Remove, table, Fields());
  }
  std::int64_t rowLimit(const TableDef& table) override { return tableOf(table).lastKey; }
  engine::Extent extent(const TableDef& table) override {
    const auto& rows = tableOf(table).rows;
    return {std::ssize(rows), rows.empty() ? 0 : rows.begin()->first, rows.empty() ? 0 : rows.rbegin()->first};
  }
  bool readsInOrder(const TableDef&, std::size_t) override { return false; }
  void begin() override { saved_.push_back(tables_); }
  void commit() override { saved_.clear(); }
  void rollback() noexcept override { rollbackTo(0); }
  void savepoint(int) override { begin(); }
  void release(int) override { saved_.pop_back(); }
  void rollbackTo(int level) noexcept override {
    tables_ = saved_[static_cast<std::size_t>(level)];
    saved_.resize(static_cast<std::size_t>(level));
  }
  [[nodiscard]] bool inTransaction() const override { return !saved_.empty(); }
  void beginView() override {}
  void endView() noexcept override {}
  void lookForChanges(engine::ChangeListener&, bool) override {}
  void makeDurable() override {}
  std::vector<TableRows> copyTo(const std::filesystem::path&) override { return {}; }
  std::vector<std::string> damage() override { return {}; }
  void watch(std::function<bool()>) override {}

 protected:
  FakeTable& tableOf(const TableDef& table) { return tables_[base::foldAscii(table.name)]; }

  FakeTables tables_;
  std::vector<FakeTables> saved_;
  std::uint64_t generation_ = 1;
};

}  // namespace jet::test
