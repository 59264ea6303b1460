#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <unordered_map>
#include <vector>

#include "base/look.h"
#include "jet/engine/columns/column_source.h"
#include "jet/engine/columns/date_part_reader.h"
#include "jet/engine/columns/statistic_plan.h"

namespace jet::columns {

// The fields of the rows of some keys, row after row.
using RowReader = std::function<std::vector<Value>(std::span<const std::int64_t> keys)>;

// The finished rows of a statistic, in its order: a few numbers a group, from which a row is made when it is looked at.
// Of a server, what a group's first row shows is read then, too, some rows together: Error 3151, and Null for a row
// that was deleted meanwhile.
class StatisticRows {
 public:
  [[nodiscard]] const ColumnNames& names() const { return names_; }
  [[nodiscard]] std::size_t count() const { return order_.size(); }
  // Appends the cells of a row.
  void append(std::size_t row, std::vector<Value>& cells) const;
  // Reads what the first rows show at once: of all groups, since every row will be looked at.
  void readFirsts() const;
  [[nodiscard]] std::shared_ptr<const ResultTable> table() const;

 private:
  friend class GroupSums;
  struct Group {
    std::int64_t firstRow;  // the lowest key
    std::int32_t key;       // of that row; PackedIntegers::kNone for Null, but 0 of a text
    std::int64_t rows;
  };

  [[nodiscard]] Value cell(const StatisticPlan::Item& item, std::size_t group) const;
  [[nodiscard]] Value keyOf(std::size_t group) const;
  void readFirsts(std::span<const std::uint32_t> groups) const;
  void sort(const std::vector<StatisticPlan::Order>& order, const base::Look& look);
  void sortBy(const StatisticPlan::Item& item, bool descending, const base::Look& look);

  ColumnNames names_;
  std::vector<StatisticPlan::Item> items_;
  StatisticPlan::Grouping::Kind grouping_ = StatisticPlan::Grouping::Kind::All;
  std::shared_ptr<const TextDictionary> keyTexts_;
  std::vector<std::shared_ptr<const TextDictionary>> firstTexts_;
  std::vector<std::size_t> sumOf_;  // of each operand: operands that come to the same share their sums
  std::vector<bool> whole_;         // of each operand
  std::vector<Group> groups_;
  std::vector<std::vector<PartSum>> sums_;                                    // by operand, by group
  std::vector<std::vector<std::int32_t>> firsts_;                             // by field, by group
  std::vector<std::uint32_t> order_;                                          // of groups
  RowReader readsFirsts_;                                                     // instead of firsts_
  mutable std::unordered_map<std::uint32_t, std::vector<Value>> readFirsts_;  // by group, by field
};

// Adds rows up by groups.
class GroupSums {
 public:
  // `columns` by their place in the table's definition: those of plan.fields() at least. All must outlive this.
  GroupSums(const StatisticPlan& plan, StatisticPlan::Constants constants, std::span<const Column* const> columns);

  // Rows of a block: `from` and distances from it. Their keys ascend from call to call, or are given (by distance).
  void add(std::size_t from, std::size_t count, std::span<const std::uint32_t> rows,
           std::span<const std::int64_t> keys = {});
  // Some of the rows of a group, or all.
  void add(const ColumnSource::Part& part);
  // With `firsts`, the plan's firsts() of the groups are read by it.
  [[nodiscard]] std::shared_ptr<const StatisticRows> finish(const base::Look& look, RowReader firsts = {});

 private:
  void findGroups(std::size_t from, std::size_t count, std::span<const std::uint32_t> rows);
  void noteRows(std::size_t from, std::size_t count, std::span<const std::uint32_t> rows,
                std::span<const std::int64_t> keys);
  void addWhole(std::size_t operand, std::size_t from, std::size_t count, std::span<const std::uint32_t> rows);
  void addReal(std::size_t operand, std::size_t from, std::span<const std::uint32_t> rows);
  void shareSums();
  std::uint32_t groupOfText(std::int32_t code);
  std::uint32_t groupOf(std::int32_t key);
  std::uint32_t newGroup(std::int32_t key);

  const StatisticPlan& plan_;
  StatisticPlan::Constants constants_;
  std::span<const Column* const> columns_;
  DatePartReader part_;
  std::shared_ptr<StatisticRows> result_;
  std::vector<std::uint32_t> groupOfCode_;  // texts: by code + 1 of the group; 0: none yet
  std::unordered_map<std::int32_t, std::uint32_t> groupOfNumber_;
  // Of the rows at hand.
  std::vector<std::int32_t> keys_;
  std::vector<std::uint32_t> groups_;
  std::vector<std::int32_t> integers_;
  std::vector<double> reals_;
};

}  // namespace jet::columns
