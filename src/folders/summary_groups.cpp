#include "folders/summary_groups.h"

#include <algorithm>
#include <array>

#include "base/printf.h"
#include "folders/numbers.h"

namespace folders {

namespace {

constexpr std::size_t kLargestShown = 20;
constexpr std::array kNaturalKinds = {KindWeekday, KindDay, KindHour, KindMonth};

void addTo(std::vector<double>& sums, const std::vector<double>& more) {
  for (std::size_t i = 0; i < more.size(); ++i) sums[i] += more[i];
}

}  // namespace

SummaryGroups::SummaryGroups(FolderView& view) : view_(view) {
  const auto& columns = view.columns();
  for (std::size_t i = 1; i < columns.size(); ++i) {
    if (formatOfKind(columns[i].definition->kind).summed) measures_.push_back(i);
  }
  natural_ = std::ranges::find(kNaturalKinds, columns.front().definition->kind) != kNaturalKinds.end();
  totals_.assign(measures_.size(), 0);
  others_.sums.assign(measures_.size(), 0);
  chooseMeasure();
  readGroups();
}

// The largest groups are picked while they are read, so what is large must be known before.
void SummaryGroups::chooseMeasure() {
  view_.forEachRow([this](std::span<const CellValue> row) {
    for (std::size_t i = 0; i < measures_.size(); ++i) totals_[i] += row[measures_[i]].first->toDouble();
    return true;
  });
  charted_ = totals_[measureOf(KindPriceSum)] > 0 ? measureOf(KindPriceSum) : measureOf(KindCount);
}

void SummaryGroups::readGroups() {
  std::vector<std::pair<double, Group>> ordered;
  view_.forEachRow([&](std::span<const CellValue> row) {
    Group group = groupOf(row);
    const double place = natural_ ? row.front().first->toDouble(-1) : -group.sums[charted_];
    const auto after = std::ranges::upper_bound(ordered, place, {}, &std::pair<double, Group>::first);
    ordered.emplace(after, place, std::move(group));
    if (!natural_ && ordered.size() > kLargestShown) {
      addTo(others_.sums, ordered.back().second.sums);
      ++otherCount_;
      ordered.pop_back();
    }
    return true;
  });
  for (auto& [place, group] : ordered) groups_.push_back(std::move(group));
  others_.label = base::format("%s (%d)", translated("IDS_OTHERS"), otherCount_);
}

std::string SummaryGroups::chartTitle() const {
  const bool money = formatOfKind(kindOf(charted_)).format == Format::Money;
  return caption(charted_) + (money ? ", " + view_.services().currencies.Default().name : "");
}

std::vector<Bar> SummaryGroups::bars() const {
  std::vector<Bar> bars;
  for (const Group& group : groups_) bars.push_back({group.label, group.sums[charted_], text(group, charted_)});
  return bars;
}

std::string SummaryGroups::othersText() const {
  return otherCount_ == 0 ? std::string() : others_.label + ": " + text(others_, charted_);
}

std::vector<std::string> SummaryGroups::headings() const {
  std::vector<std::string> headings = {view_.columns().front().caption};
  for (std::size_t i = 0; i < measures_.size(); ++i) headings.push_back(caption(i));
  return headings;
}

std::vector<std::vector<std::string>> SummaryGroups::rows() const {
  std::vector<std::vector<std::string>> rows;
  for (const Group& group : groups_) rows.push_back(rowOf(group));
  if (otherCount_ > 0) rows.push_back(rowOf(others_));
  return rows;
}

std::vector<std::string> SummaryGroups::totals() const {
  return rowOf({translated("IDS_TOTAL"), totals_});
}

std::string SummaryGroups::translated(std::string_view key) const {
  return view_.formatter().texts().Translate(key);
}

int SummaryGroups::kindOf(std::size_t measure) const {
  return view_.columns()[measures_[measure]].definition->kind;
}

const std::string& SummaryGroups::caption(std::size_t measure) const {
  return view_.columns()[measures_[measure]].caption;
}

std::string SummaryGroups::text(const Group& group, std::size_t measure) const {
  return view_.formatter().formatTotal(kindOf(measure), group.sums[measure]);
}

std::size_t SummaryGroups::measureOf(int kind) const {
  for (std::size_t i = 0; i < measures_.size(); ++i) {
    if (kindOf(i) == kind) return i;
  }
  return 0;
}

SummaryGroups::Group SummaryGroups::groupOf(std::span<const CellValue> row) const {
  Group group{view_.text(0, row.front()), {}};
  if (group.label.empty()) group.label = "-";
  for (const std::size_t column : measures_) group.sums.push_back(row[column].first->toDouble());
  return group;
}

std::vector<std::string> SummaryGroups::rowOf(const Group& group) const {
  std::vector<std::string> texts = {group.label};
  for (std::size_t i = 0; i < measures_.size(); ++i) texts.push_back(text(group, i));
  return texts;
}

}  // namespace folders
