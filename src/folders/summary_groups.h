#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "folders/bar_chart.h"
#include "folders/folder_view.h"

namespace folders {

// The groups of a statistic as a page shows them, at most a screenful however many there are: hours, days, weekdays and
// months in their natural order; of other groups the twenty largest, and the sum of the rest as "others".
class SummaryGroups {
 public:
  // Reads the view through. Throws jet::Error.
  explicit SummaryGroups(FolderView& view);

  // What the bars show: the price, or the number of calls when nothing was charged.
  [[nodiscard]] std::string chartTitle() const;
  // Without the others: thousands of small groups together would dwarf the largest ones.
  [[nodiscard]] std::vector<Bar> bars() const;
  // The others in words; empty without any.
  [[nodiscard]] std::string othersText() const;

  // The table: the group and its figures, a text a heading.
  [[nodiscard]] std::vector<std::string> headings() const;
  [[nodiscard]] std::vector<std::vector<std::string>> rows() const;
  [[nodiscard]] std::vector<std::string> totals() const;

 private:
  struct Group {
    std::string label;
    std::vector<double> sums;  // in the order of the measures
  };

  void chooseMeasure();
  void readGroups();
  [[nodiscard]] std::string translated(std::string_view key) const;
  [[nodiscard]] int kindOf(std::size_t measure) const;
  [[nodiscard]] const std::string& caption(std::size_t measure) const;
  [[nodiscard]] std::string text(const Group& group, std::size_t measure) const;
  [[nodiscard]] std::size_t measureOf(int kind) const;
  [[nodiscard]] Group groupOf(std::span<const CellValue> row) const;
  [[nodiscard]] std::vector<std::string> rowOf(const Group& group) const;

  FolderView& view_;
  std::vector<std::size_t> measures_;  // columns with totals
  bool natural_ = false;
  std::size_t charted_ = 0;
  std::vector<double> totals_;
  std::vector<Group> groups_;
  Group others_;
  std::int64_t otherCount_ = 0;
};

}  // namespace folders
