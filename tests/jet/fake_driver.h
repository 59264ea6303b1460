#pragma once

#include <algorithm>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "base/text.h"
#include "jet/engine/columns/statistic_plan.h"
#include "jet/engine/driver.h"
#include "jet/engine/memory/evaluator.h"
#include "jet/engine/memory/select_plan.h"
#include "jet/error.h"

namespace jet::test {

using engine::Role;
using engine::RowKey;

// Rows that are found when the query is first stepped.
class FoundRows : public engine::Query {
 public:
  struct Row {
    RowKey key = 0;
    std::vector<Value> cells;
  };

  void bind(const engine::Arguments& arguments) override {
    arguments_ = arguments;
    extras_.assign(arguments.extras.begin(), arguments.extras.end());
    begun_ = false;
  }
  bool step() override {
    if (!begun_) {
      rows_.clear();
      changed_ = 0;
      next_ = 0;
      begun_ = true;
      find();
    }
    return next_++ < rows_.size();
  }
  [[nodiscard]] RowKey key() const override { return rows_[next_ - 1].key; }
  [[nodiscard]] engine::Cell cell(std::size_t item) const override {
    using Kind = engine::Cell::Kind;
    const Value& value = rows_[next_ - 1].cells[item];
    if (value.isNull()) return {};
    if (value.type() == Type::Double) return {.kind = Kind::Real, .real = value.number()};
    if (value.type() == Type::Text) return {.kind = Kind::Text, .text = value.text()};
    if (value.type() != Type::DateTime) {
      return {.kind = Kind::Integer, .integer = value.type() == Type::Boolean ? value.boolean() : value.integer()};
    }
    stored_ = value.dateTime().stored();
    return {.kind = Kind::Text, .text = stored_};
  }
  [[nodiscard]] std::int64_t changed() const override { return changed_; }
  [[nodiscard]] std::int64_t work() const override { return static_cast<std::int64_t>(rows_.size()); }
  void reset() noexcept override { begun_ = false; }
  [[nodiscard]] bool usable() override { return true; }

 protected:
  virtual void find() = 0;

  engine::Arguments arguments_;
  std::vector<std::int64_t> extras_;
  std::vector<Row> rows_;
  std::int64_t changed_ = 0;

 private:
  bool begun_ = false;
  std::size_t next_ = 0;
  mutable std::string stored_;
};

struct FakeTable {
  bind::TableDefPtr def;
  std::map<RowKey, std::vector<Value>> rows;
  RowKey lastKey = 0;

  RowKey add(std::vector<Value> cells) {
    for (std::size_t i = 0; i < cells.size(); ++i) {
      if (def->fields[i].autoIncrement) cells[i] = Value(lastKey + 1);
    }
    rows.emplace(++lastKey, std::move(cells));
    return lastKey;
  }
};
using FakeTables = std::map<std::string, FakeTable>;  // by folded name

class FakeQuery final : public FoundRows {
 public:
  FakeQuery(FakeTables& tables, const engine::QueryRequest& request)
      : tables_(tables), role_(request.role), query_(*request.query), statement_(query_.statement) {
    if (statement_.grouped || !statement_.readsOneTable())
      throw Error(3000, "The fake driver reads rows of one table.");
  }

 private:
  FakeTable& table() { return tables_.at(base::foldAscii(statement_.table().name)); }
  RowKey extra(std::size_t index) const { return extras_[index]; }
  bool isRole(std::initializer_list<Role> roles) const { return std::ranges::find(roles, role_) != roles.end(); }

  void find() override {
    evaluator_.beginConverted(query_, arguments_.literals);
    if (statement_.kind != Statement::Kind::Select) return change();
    if (isRole({Role::Run, Role::Among})) return runSelect();
    for (const auto& [key, cells] : table().rows) {
      if (isWanted(key, cells)) rows_.push_back({key, cells});
    }
    sort();
    if (isRole({Role::PreviousKeys, Role::KeysPageBack, Role::KeysBefore})) std::reverse(rows_.begin(), rows_.end());
    if (isRole({Role::Count, Role::CountBefore})) return rows_.assign(1, Row{static_cast<RowKey>(rows_.size()), {}});
    cut();
    for (Row& row : rows_) row.cells = shown(row);
  }

  bool holds(const std::optional<bind::BoundExpression>& condition, const std::vector<Value>& cells) {
    evaluator_.setRow(cells.data());
    return !condition || evaluator_.holds(*condition);
  }

  bool isWanted(RowKey key, const std::vector<Value>& cells) {
    if (isRole({Role::Read, Role::ReadMatching}) && key != extra(0)) return false;
    if (isRole({Role::NextKeys, Role::FindNext}) && key <= extra(0)) return false;
    if (isRole({Role::PreviousKeys, Role::CountBefore}) && key >= extra(0)) return false;
    return role_ == Role::Read || (holds(statement_.where, cells) && holds(query_.criteria, cells));
  }

  // Rows that are equal follow by key in the direction of the last item.
  void sort() {
    if (isRole({Role::NextKeys, Role::PreviousKeys, Role::FindNext}) || statement_.orderBy.empty()) return;
    if (statement_.orderBy.back().descending) std::reverse(rows_.begin(), rows_.end());
    std::stable_sort(rows_.begin(), rows_.end(), [this](const Row& left, const Row& right) {
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
    RowKey most = static_cast<RowKey>(rows_.size());
    if (isRole({Role::KeysFrom, Role::KeysBefore})) {
      const auto anchor = std::ranges::find(rows_, extra(0), &Row::key) - rows_.begin();
      skip = anchor + (role_ == Role::KeysBefore ? 1 : 0) + extra(2);
      most = extra(1);
    } else if (isRole({Role::KeysPage, Role::KeysPageBack})) {
      most = extra(0);
      skip = extra(1);
    } else if (isRole({Role::NextKeys, Role::PreviousKeys})) {
      most = extra(1);
    } else if (isRole({Role::FindFirst, Role::FindNext})) {
      most = 1;
    }
    rows_.erase(rows_.begin(), rows_.begin() + std::min(skip, static_cast<RowKey>(rows_.size())));
    rows_.resize(std::min(rows_.size(), static_cast<std::size_t>(most)));
  }

  std::vector<Value> shown(const Row& row) {
    std::vector<Value> cells;
    evaluator_.setRow(row.cells.data());
    for (const bind::BoundItem& item : statement_.items) cells.push_back(evaluator_.value(item.expression));
    return cells;
  }

  void runSelect() {
    const auto plan = memory::SelectPlan::make({std::shared_ptr<void>(), &query_});
    std::vector<Value> cells;
    for (const auto& [key, row] : table().rows) {
      const bool among = role_ == Role::Run || std::ranges::find(extras_, key) != extras_.end();
      if (among) cells.insert(cells.end(), row.begin(), row.end());
    }
    const std::size_t fields = statement_.table().fields.size();
    const auto result = plan->run(evaluator_, {cells.data(), fields, cells.size() / fields}, std::nullopt);
    const auto width = static_cast<std::ptrdiff_t>(statement_.items.size());
    for (auto row = result->cells.begin(); row != result->cells.end(); row += width) {
      rows_.push_back({0, {row, row + width}});
    }
  }

  void assign(std::vector<Value>& cells) {
    const std::vector<Value> before = cells;
    evaluator_.setRow(before.data());
    for (const bind::BoundAssignment& each : statement_.assignments) cells[each.field] = evaluator_.value(each.value);
  }

  void change() {
    if (statement_.kind == Statement::Kind::Insert) {
      std::vector<Value> cells(statement_.table().fields.size());
      assign(cells);
      table().add(std::move(cells));
      changed_ = 1;
      return;
    }
    auto rows = table().rows;  // a fault leaves all as it was
    for (auto row = rows.begin(); row != rows.end();) {
      const bool wanted = holds(statement_.where, row->second);
      changed_ += wanted ? 1 : 0;
      if (wanted && statement_.kind == Statement::Kind::Update) assign(row->second);
      row = wanted && statement_.kind == Statement::Kind::Delete ? rows.erase(row) : std::next(row);
    }
    table().rows = std::move(rows);
  }

  FakeTables& tables_;
  Role role_;
  const bind::BoundQuery& query_;
  const bind::BoundStatement& statement_;
  memory::Evaluator evaluator_;
};

class FakeScan final : public FoundRows {
 public:
  FakeScan(const FakeTable& table, std::span<const std::size_t> fields, engine::KeyRange range)
      : table_(table), fields_(fields.begin(), fields.end()), range_(range) {}

 private:
  void find() override {
    for (const auto& [key, cells] : table_.rows) {
      if (key <= range_.behind || key > range_.last) continue;
      rows_.push_back({key, {}});
      for (const std::size_t field : fields_) rows_.back().cells.push_back(cells[field]);
    }
  }

  const FakeTable& table_;
  std::vector<std::size_t> fields_;
  engine::KeyRange range_;
};

class FakeChange final : public engine::RowChange {
 public:
  using Run = std::function<std::int64_t(RowKey key, std::span<const Value* const> values)>;
  explicit FakeChange(Run run) : run_(std::move(run)) {}
  std::int64_t run(RowKey key, std::span<const Value* const> values) override { return run_(key, values); }

 private:
  Run run_;
};

// A driver that keeps its tables in memory and knows no SQL: what it evaluates are the bound trees that it is given. It
// joins and groups nothing.
class FakeDriver final : public engine::Driver {
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
    tables_[base::foldAscii(table.name)].def = std::make_shared<const TableDef>(table);
    ++generation_;
  }
  void upgradeTable(const TableDef&) override {}
  [[nodiscard]] std::uint64_t generation() const override { return generation_; }

  std::unique_ptr<engine::Query> prepare(const engine::QueryRequest& request) override {
    return std::make_unique<FakeQuery>(tables_, request);
  }
  std::unique_ptr<engine::Query> scan(const TableDef& table, Fields fields, engine::KeyRange range) override {
    return std::make_unique<FakeScan>(tableOf(table), fields, range);
  }
  std::unique_ptr<engine::RowChange> prepareInsert(const TableDef& table, Fields fields) override {
    return std::make_unique<FakeChange>([this, def = table, places = copied(fields)](RowKey, auto values) {
      std::vector<Value> cells(def.fields.size());
      for (std::size_t i = 0; i < places.size(); ++i) cells[places[i]] = *values[i];
      return tableOf(def).add(std::move(cells));
    });
  }
  std::unique_ptr<engine::RowChange> prepareUpdate(const TableDef& table, Fields fields) override {
    return std::make_unique<FakeChange>([this, def = table, places = copied(fields)](RowKey key, auto values) {
      const auto row = tableOf(def).rows.find(key);
      if (row == tableOf(def).rows.end()) return std::int64_t{0};
      for (std::size_t i = 0; i < places.size(); ++i) row->second[places[i]] = *values[i];
      return std::int64_t{1};
    });
  }
  std::unique_ptr<engine::RowChange> prepareRemove(const TableDef& table) override {
    return std::make_unique<FakeChange>(
        [this, def = table](RowKey key, auto) { return static_cast<std::int64_t>(tableOf(def).rows.erase(key)); });
  }

  std::int64_t rowLimit(const TableDef& table) override { return tableOf(table).lastKey; }
  engine::Extent extent(const TableDef& table) override {
    const auto& rows = tableOf(table).rows;
    if (rows.empty()) return {};
    return {static_cast<std::int64_t>(rows.size()), rows.begin()->first, rows.rbegin()->first};
  }
  bool readsInOrder(const TableDef&, std::size_t) override { return false; }

  void begin() override { saved_.push_back(tables_); }
  void commit() override { saved_.clear(); }
  void rollback() noexcept override { rollbackTo(0); }
  void savepoint(int) override { saved_.push_back(tables_); }
  void release(int) override { saved_.pop_back(); }
  void rollbackTo(int level) noexcept override {
    tables_ = saved_[static_cast<std::size_t>(level)];
    saved_.resize(static_cast<std::size_t>(level));
  }
  [[nodiscard]] bool inTransaction() const override { return !saved_.empty(); }
  void beginView() override {}
  void endView() noexcept override {}

  void lookForChanges(engine::ChangeListener& listener) override {
    for (const std::string& table : changedByOthers_) listener.tableChanged(table);
    changedByOthers_.clear();
  }
  void makeDurable() override {}
  void watch(std::function<bool()>) override {}

  // As another connection changes a cell.
  void changeByOthers(const std::string& table, RowKey key, std::size_t field, Value value) {
    tables_.at(base::foldAscii(table)).rows.at(key)[field] = std::move(value);
    changedByOthers_.push_back(table);
  }

 private:
  FakeTable& tableOf(const TableDef& table) { return tables_.at(base::foldAscii(table.name)); }
  static std::vector<std::size_t> copied(Fields fields) { return {fields.begin(), fields.end()}; }

  FakeTables tables_;
  std::vector<FakeTables> saved_;
  std::vector<std::string> changedByOthers_;
  std::uint64_t generation_ = 1;
};

}  // namespace jet::test
