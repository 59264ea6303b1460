#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>

#include "base/text.h"
#include "jet/engine/columns/column_store.h"
#include "jet/engine/columns/group_sums.h"
#include "jet/engine/columns/key_order.h"
#include "jet/engine/columns/statistic_plan.h"
#include "jet/engine/shaped_text.h"

namespace jet::columns {

using BoundQueryPtr = std::shared_ptr<const bind::BoundQuery>;

// Answers selects that count, sum and average the rows of one table by groups. The first ones read the rows that the
// database finds and add them up by hashing, where a database sorts them; when that was done about as often as reading
// the table once is worth, the columns are held in memory. The answer is the one that the database would give now; sums
// of fractions may differ from it in their last digit, as its own do with the order in which it reads.
class Statistics {
 public:
  // The source must outlive this.
  explicit Statistics(ColumnSource& source) : source_(source) {}

  // Null: the database must answer. `query` is the text, bound.
  std::shared_ptr<const StatisticRows> answer(const engine::ShapedText& text, const BoundQueryPtr& query);
  // The number of rows of a select without groups; nothing when the database must count.
  std::optional<std::int64_t> count(const engine::ShapedText& text, const BoundQueryPtr& query);
  // The keys of such a select in its order; null when the database must find them. So it must for small tables, and for
  // a list that it has an index for: that costs no memory.
  std::shared_ptr<const KeyOrder> keyOrder(const engine::ShapedText& text, const BoundQueryPtr& query);
  // Whether the ends of such a select's order are better asked of the database than of keyOrder(): once on a server,
  // before columns are read.
  bool leavesEnds(const engine::ShapedText& text, const BoundQueryPtr& query);
  // Reads on toward a quick answer to this select, or to its count and order, as long as `goesOn` says so; nothing of a
  // table of more than `mostRows`. True while there is more to read.
  bool readAhead(const engine::ShapedText& text, const BoundQueryPtr& query, std::int64_t mostRows,
                 const std::function<bool()>& goesOn);
  // `watcher` is called every few milliseconds while rows are gone through in memory; its answer false stops that with
  // Error 3059.
  void watch(std::function<bool()> watcher) { watcher_ = std::move(watcher); }

 private:
  struct Known {
    BoundQueryPtr query;
    std::unique_ptr<StatisticPlan> plan;  // null: not one for here
  };
  using Maker = std::unique_ptr<StatisticPlan> (*)(BoundQueryPtr);
  using Plans = std::unordered_map<std::string, Known, base::TextHash, std::equal_to<>>;

  // A select without groups and what it needs.
  struct List {
    StatisticPlan* plan;
    ColumnStore* store;
    std::vector<std::size_t> fields;
    bool eager;  // worth reading the table for at once
  };

  // Lets the watcher look; before the rows from `from` on.
  void look() const;
  void look(std::size_t from) const;
  [[nodiscard]] std::vector<std::uint32_t> selectedRows(RowFilter& filter, std::size_t all) const;
  std::optional<List> listOf(const engine::ShapedText& text, const BoundQueryPtr& query);
  [[nodiscard]] bool beginFilter(StatisticPlan& plan, std::span<const Column* const> columns);
  bool isLeftToServer(const List& list, std::span<const std::size_t> fields, const std::string& question);
  StatisticPlan* planOf(Plans& plans, const engine::ShapedText& text, const BoundQueryPtr& query, Maker make);
  ColumnStore& storeOf(const TableDef& definition);
  std::shared_ptr<const StatisticRows> fromColumns(StatisticPlan& plan, const StatisticPlan::Constants& constants,
                                                   const ColumnStore& store);
  std::shared_ptr<const StatisticRows> fromDatabase(const engine::ShapedText& text, const StatisticPlan& plan,
                                                    const StatisticPlan::Constants& constants, ColumnStore& store);

  std::shared_ptr<const StatisticRows> fromServer(const engine::ShapedText& text, const StatisticPlan& plan,
                                                  const StatisticPlan::Constants& constants, ColumnStore& store,
                                                  bool exactly);

  ColumnSource& source_;
  Plans statistics_;  // by shape
  Plans lists_;
  std::unordered_map<std::string, ColumnStore, base::TextHash, std::equal_to<>> stores_;  // by table
  std::set<std::string> left_;                                                            // questions to a server
  memory::Evaluator evaluator_;
  std::function<bool()> watcher_;
  base::Look look_ = [this] { look(); };
};

}  // namespace jet::columns
