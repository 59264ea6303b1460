#include "folders/summary_page.h"

#include <algorithm>
#include <array>
#include <stdexcept>

#include "base/printf.h"
#include "base/text.h"
#include "base/version.h"
#include "filter/description.h"
#include "folders/bar_chart.h"
#include "folders/report_file.h"

namespace folders {

namespace {

constexpr std::size_t kLargestShown = 20;
constexpr std::array kNaturalKinds = {429, 430, 431, 432};  // weekday, day of month, hour, month
constexpr int kPriceKind = 417;
constexpr int kCountKind = 421;

constexpr std::string_view kStyle =
    "body{font:15px/1.45 system-ui,sans-serif;max-width:60rem;margin:2rem auto;padding:0 1rem;color:#1b1f24}"
    "h1{font-size:1.5rem;margin:0}p.sub{color:#59636e;margin:.2rem 0 1.2rem}"
    ".filter{margin-bottom:1.2rem}.filter ul{margin:.2rem 0;padding-left:1.2rem;list-style:disc}.filter ul "
    "ul{padding:0}.filter hr{display:none}"
    "font{font-size:inherit}"  // the description of the filter leaves one open
    "svg{width:100%;height:auto;font-size:13px}svg rect{fill:#2f6fb0}svg .label{text-anchor:end}"
    "p.others{color:#59636e;margin:.3rem 0 0}"
    "table{border-collapse:collapse;width:100%;margin-top:1.5rem;font-variant-numeric:tabular-nums}"
    "th,td{padding:.3rem .6rem;border-bottom:1px solid #d5dae0;text-align:right}"
    "th:first-child,td:first-child{text-align:left}tfoot td{font-weight:600;border-top:2px solid #1b1f24}"
    "footer{color:#59636e;font-size:.85rem;margin-top:1.5rem}"
    "@page{size:A4;margin:15mm}@media print{body{margin:0;max-width:none;font-size:13px}svg "
    "rect{print-color-adjust:exact;-webkit-print-color-adjust:exact}"
    "tr{break-inside:avoid}tfoot{display:table-row-group}}";

struct Group {
  std::string label;
  std::vector<double> sums;  // in the order of the measures
};

// Collects the groups of a statistic, at most a screenful however many there are.
class Summary {
 public:
  explicit Summary(FolderView& view) : view_(view) {
    const auto& columns = view.columns();
    for (std::size_t i = 1; i < columns.size(); ++i) {
      if (formatOfKind(columns[i].definition->kind).summed) measures_.push_back(i);
    }
    natural_ = std::ranges::find(kNaturalKinds, columns.front().definition->kind) != kNaturalKinds.end();
    totals_.assign(measures_.size(), 0);
    others_.sums.assign(measures_.size(), 0);
  }

  void read() {
    chooseMeasure();
    std::vector<std::pair<double, Group>> ordered;
    view_.forEachRow([&](std::span<const CellValue> row) {
      Group group = groupOf(row);
      const double place = natural_ ? row.front().first->toDouble(-1) : -group.sums[charted_];
      const auto after = std::ranges::upper_bound(ordered, place, {}, &std::pair<double, Group>::first);
      ordered.emplace(after, place, std::move(group));
      if (!natural_ && ordered.size() > kLargestShown) {
        addTo(others_, ordered.back().second);
        ++otherCount_;
        ordered.pop_back();
      }
      return true;
    });
    for (auto& [place, group] : ordered) groups_.push_back(std::move(group));
    others_.label = base::format("%s (%d)", translated("IDS_OTHERS"), otherCount_);
  }

  [[nodiscard]] std::string chart() const {
    std::vector<Bar> bars;
    for (const Group& group : groups_) bars.push_back({group.label, group.sums[charted_], text(group, charted_)});
    return barChartSvg(bars, chartTitle()) + othersInWords();
  }

  [[nodiscard]] std::string chartTitle() const {
    const bool money = formatOfKind(kindOf(charted_)).format == Format::Money;
    return caption(charted_) + (money ? ", " + view_.services().currencies.Default().name : "");
  }

  [[nodiscard]] std::string table() const {
    std::string page = "<table>\n<thead><tr><th>" + base::escapeHtml(view_.columns().front().caption) + "</th>";
    for (std::size_t i = 0; i < measures_.size(); ++i) page += "<th>" + base::escapeHtml(caption(i)) + "</th>";
    page += "</tr></thead>\n<tbody>\n";
    for (const Group& group : groups_) page += row(group);
    if (otherCount_ > 0) page += row(others_);
    page += "</tbody>\n<tfoot>" + row({translated("IDS_TOTAL"), totals_}) + "</tfoot>\n</table>\n";
    return page;
  }

 private:
  // Thousands of small groups together would dwarf the largest ones, so they have no bar.
  [[nodiscard]] std::string othersInWords() const {
    if (otherCount_ == 0) return {};
    return "<p class=\"others\">" + base::escapeHtml(others_.label + ": " + text(others_, charted_)) + "</p>\n";
  }

  [[nodiscard]] std::string translated(std::string_view key) const { return view_.formatter().texts().Translate(key); }
  [[nodiscard]] int kindOf(std::size_t measure) const { return view_.columns()[measures_[measure]].definition->kind; }
  [[nodiscard]] const std::string& caption(std::size_t measure) const {
    return view_.columns()[measures_[measure]].caption;
  }
  [[nodiscard]] std::string text(const Group& group, std::size_t measure) const {
    return view_.formatter().formatTotal(kindOf(measure), group.sums[measure]);
  }
  [[nodiscard]] std::size_t measureOf(int kind) const {
    for (std::size_t i = 0; i < measures_.size(); ++i) {
      if (kindOf(i) == kind) return i;
    }
    return 0;
  }

  // The largest groups are picked while they are read, so what is large must be known before.
  void chooseMeasure() {
    view_.forEachRow([this](std::span<const CellValue> row) {
      for (std::size_t i = 0; i < measures_.size(); ++i) totals_[i] += row[measures_[i]].first->toDouble();
      return true;
    });
    charted_ = totals_[measureOf(kPriceKind)] > 0 ? measureOf(kPriceKind) : measureOf(kCountKind);
  }

  [[nodiscard]] Group groupOf(std::span<const CellValue> row) const {
    Group group{view_.text(0, row.front()), {}};
    if (group.label.empty()) group.label = "-";
    for (const std::size_t column : measures_) group.sums.push_back(row[column].first->toDouble());
    return group;
  }

  static void addTo(Group& sum, const Group& group) {
    for (std::size_t i = 0; i < group.sums.size(); ++i) sum.sums[i] += group.sums[i];
  }

  [[nodiscard]] std::string row(const Group& group) const {
    std::string page = "<tr><td>" + base::escapeHtml(group.label) + "</td>";
    for (std::size_t i = 0; i < measures_.size(); ++i) page += "<td>" + base::escapeHtml(text(group, i)) + "</td>";
    return page + "</tr>\n";
  }

  FolderView& view_;
  std::vector<std::size_t> measures_;  // columns with totals
  bool natural_ = false;
  std::size_t charted_ = 0;
  std::vector<double> totals_;
  std::vector<Group> groups_;
  Group others_;
  std::int64_t otherCount_ = 0;
};

std::string filterOf(const FolderServices& services) {
  filter::FilterDescription description(services.filter, services.texts, services.currencies);
  return "<div class=\"filter\">" + description.html(services.main) + "</div>\n";
}

}  // namespace

bool canSummarise(const FolderDefinition& definition) {
  return isStatistic(definition);
}

bool writeSummaryPage(FolderView& view, const std::filesystem::path& path) {
  if (!canSummarise(view.folder().definition())) {
    throw std::invalid_argument(
        base::format("Folder %d lists records; a summary needs a folder that groups calls.", view.folder().id()));
  }
  const FolderServices& services = view.services();
  const auto file = openReport(path, services.person);
  if (!file) return false;
  Summary summary(view);
  summary.read();

  const std::string title = base::escapeHtml(view.folder().caption());
  file->write(
      "<!DOCTYPE html>\n<html><head><meta charset=\"utf-8\"><meta name=\"viewport\" "
      "content=\"width=device-width\"><title>" +
      title + "</title><style>");
  file->write(kStyle);
  file->write("</style></head><body>\n<h1>" + title + "</h1><p class=\"sub\">" +
              base::escapeHtml(summary.chartTitle()) + "</p>\n");
  if (services.filter.active()) file->write(filterOf(services));
  file->write(summary.chart());
  file->write(summary.table());
  file->write(base::format("<footer>%s %s, %s</footer>\n</body></html>\n", base::kProgramName, base::kProgramVersion,
                           services.clock.now().format(kDateTimeFormat)));
  file->commit();
  return true;
}

}  // namespace folders
