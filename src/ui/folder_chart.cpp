#include "ui/folder_chart.h"

#include <algorithm>

#include "filter/periods.h"
#include "folders/numbers.h"
#include "platform/progress.h"
#include "ui/chart_bars.h"

namespace ui {

namespace {

// The chart has this many bars at most; beyond them they are too many to read.
constexpr std::size_t kChartRows = 400;

QString nameOf(const filter::Period& period) {
  constexpr std::string_view kDay = "%d.%m.%Y";
  const std::string first = period.start.format(kDay);
  const std::string last = period.end.format(kDay);
  return toQt(first == last ? first : first + " - " + last);
}

// The filter's period and the one before it; nothing where they are not to be compared.
struct Periods {
  filter::Period now;
  filter::Period before;
};
std::optional<Periods> periodsOf(const folders::FolderView& folder, const filter::FilterSettings& settings) {
  const bool counts = folder.folder().definition().condition == folders::ConditionSource::CallFilter;
  if (!counts || settings.onFilter != 1 || settings.onPeriod == 0) return std::nullopt;
  const filter::Period now = filter::periodOf(settings);
  const auto before = filter::periodBefore(now);
  return before ? std::optional(Periods{now, *before}) : std::nullopt;
}

void compare(Chart& chart, const Periods& periods, std::size_t value, const CFolderView& list,
             server::CServerDoc& document) {
  filter::FilterSettings settings = document.callFilter().settings();
  filter::setPeriod(settings, periods.before);
  const auto before = list.sameFolder(settings);
  if (!readBefore(chart.bars, *before, value, document.app().surroundings().person)) return;
  chart.now = nameOf(periods.now);
  chart.before = nameOf(periods.before);
}

}  // namespace

void showFolderChart(ChartPane& pane, const CFolderView& list, server::CServerDoc& document, const Texts& texts) {
  folders::FolderView& folder = *list.model().folder();
  const std::string& caption = folder.folder().caption();
  Chart chart{.title = toQt(caption), .bars = {}, .emptyText = texts("IDS_EMPTY_CHART")};
  const auto measures = measuresOf(folder);
  // The cost; the calls where it is not shown.
  const bool charged =
      std::ranges::any_of(measures, [](const auto& measure) { return measure.first == folders::KindCostSum; });
  pane.offerMeasures(measures, charged ? folders::KindCostSum : folders::KindCount);
  pane.offerShapes(hasAxis(folder.folder().definition()));
  const auto periods = periodsOf(folder, document.callFilter().settings());
  pane.offerComparison(periods.has_value());
  const int column = measures.empty() ? -1 : list.model().columnOf(pane.measure());
  if (column < 0) return pane.show(std::move(chart), 0);
  const auto value = static_cast<std::size_t>(column);
  chart.title += ": " + toQt(folder.columns()[value].caption);
  try {
    platform::Operator& person = document.app().surroundings().person;
    const platform::Progress progress(person, caption, fromQt(texts("IDS_READING_ROWS")), folder.rowCount());
    chart.bars = readBars(folder, value, kChartRows, person);
    if (periods && pane.compares()) compare(chart, *periods, value, list, document);
    pane.show(std::move(chart), folder.rowCount());
  } catch (const jet::Error& error) {
    chart.bars.clear();
    chart.emptyText = toQt(error.description());
    pane.show(std::move(chart), 0);
  }
}

}  // namespace ui
