#pragma once

#include <map>
#include <optional>

#include "jet/engine/engine.h"
#include "jet/engine/row_spool.h"
#include "jet/row_window.h"

namespace jet::engine {

// A window over rows of one table: keys are found by position, rows by key. Where the file has no order for them, or a
// condition picks few from many, the keys are ordered by columns in memory, else they are fetched, and memory does not
// grow.
class KeyedWindow final : public RowWindow {
 public:
  KeyedWindow(Engine& engine, ShapedText text);

  [[nodiscard]] const std::vector<std::string>& columns() const override { return columns_; }
  std::int64_t rowCount() override;
  Snapshot rows(std::int64_t first, std::int64_t count) override;
  std::optional<std::int64_t> find(std::string_view criteria) override;
  void refresh() override;

 private:
  struct End {
    std::vector<std::int64_t> keys;
    std::int64_t asked = 0;  // rows
  };

  std::vector<std::int64_t> keys(std::int64_t first, std::int64_t count);
  std::vector<std::int64_t> fetchKeys(std::int64_t first, std::int64_t count);
  const columns::KeyOrder* order();
  std::optional<std::vector<std::int64_t>> keysByAnchor(std::int64_t first, std::int64_t count);
  std::vector<std::int64_t> run(Role role, std::initializer_list<std::int64_t> extras);
  void lookForPlaces();
  [[nodiscard]] bool walksAnIndex() const;
  std::optional<std::vector<std::int64_t>> keysAtAnEnd(std::int64_t first, std::int64_t count);
  void readRows(const std::vector<std::int64_t>& keys, std::vector<Value>& cells);
  void keepAnchor(std::int64_t position, std::int64_t key);

  Engine& engine_;
  ShapedText text_;
  BoundQueryPtr bound_;
  std::size_t orderItems_;
  std::vector<std::string> columns_;
  // Of this refresh:
  std::optional<std::shared_ptr<const columns::KeyOrder>> order_;  // null: the keys are fetched
  std::optional<std::int64_t> count_;
  End head_;                               // the first rows, as far as a server put them in order
  End tail_;                               // the last ones, the last one first
  std::map<std::int64_t, Place> anchors_;  // by position / kAnchorSpacing
};

// A window over a select that groups, joins or drops duplicates: its rows are worked out once for each refresh. Those
// of a statistic are kept as sums, others in a spool, since there may be as many groups as rows.
class ResultWindow final : public RowWindow {
 public:
  ResultWindow(Engine& engine, ShapedText text);

  [[nodiscard]] const std::vector<std::string>& columns() const override { return columns_; }
  std::int64_t rowCount() override;
  Snapshot rows(std::int64_t first, std::int64_t count) override;
  std::optional<std::int64_t> find(std::string_view criteria) override;
  void refresh() override;

 private:
  void load();
  [[nodiscard]] std::size_t count() const { return statistic_ ? statistic_->count() : spool_->count(); }
  void appendRow(std::size_t row, std::vector<Value>& cells);

  Engine& engine_;
  ShapedText text_;
  std::vector<std::string> columns_;
  bind::TableDefPtr definition_;  // of the columns, for find()
  // Of this refresh; none before load():
  std::shared_ptr<const columns::StatisticRows> statistic_;
  std::unique_ptr<RowSpool> spool_;
};

}  // namespace jet::engine
