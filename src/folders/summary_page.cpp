#include "folders/summary_page.h"

#include <stdexcept>

#include "base/printf.h"
#include "base/text.h"
#include "base/version.h"
#include "filter/description.h"
#include "folders/bar_chart.h"
#include "folders/report_file.h"
#include "folders/summary_groups.h"
#include "folders/view_log.h"

namespace folders {

namespace {

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

std::string cells(const std::vector<std::string>& texts, std::string_view tag) {
  std::string row = "<tr>";
  for (const std::string& text : texts) row += base::format("<%s>%s</%s>", tag, base::escapeHtml(text), tag);
  return row + "</tr>";
}

std::string tableOf(const SummaryGroups& groups) {
  std::string page = "<table>\n<thead>" + cells(groups.headings(), "th") + "</thead>\n<tbody>\n";
  for (const auto& row : groups.rows()) page += cells(row, "td") + "\n";
  return page + "</tbody>\n<tfoot>" + cells(groups.totals(), "td") + "\n</tfoot>\n</table>\n";
}

std::string chartOf(const SummaryGroups& groups) {
  const std::string others = groups.othersText();
  return barChartSvg(groups.bars(), groups.chartTitle()) +
         (others.empty() ? "" : "<p class=\"others\">" + base::escapeHtml(others) + "</p>\n");
}

std::string filterOf(const FolderServices& services) {
  filter::FilterDescription description(services.filter, services.texts, services.currencies);
  return "<div class=\"filter\">" + description.html(services.main) + "</div>\n";
}

}  // namespace

bool canSummarise(const FolderDefinition& definition) {
  return isStatistic(definition);
}

void requireStatistic(const FolderView& view) {
  if (canSummarise(view.folder().definition())) return;
  throw std::invalid_argument(
      base::format("Folder %d lists records; a summary needs a folder that groups calls.", view.folder().id()));
}

bool writeSummaryPage(FolderView& view, const std::filesystem::path& path) {
  requireStatistic(view);
  const FolderServices& services = view.services();
  const auto file = openReport(path, services.person);
  if (!file) return false;
  const SummaryGroups groups(view);

  const std::string title = base::escapeHtml(view.folder().caption());
  file->write(
      "<!DOCTYPE html>\n<html><head><meta charset=\"utf-8\"><meta name=\"viewport\" "
      "content=\"width=device-width\"><title>" +
      title + "</title><style>");
  file->write(kStyle);
  file->write("</style></head><body>\n<h1>" + title + "</h1><p class=\"sub\">" + base::escapeHtml(groups.chartTitle()) +
              "</p>\n");
  if (services.filter.active()) file->write(filterOf(services));
  file->write(chartOf(groups));
  file->write(tableOf(groups));
  file->write(base::format("<footer>%s %s, %s</footer>\n</body></html>\n", base::kProgramName, base::kProgramVersion,
                           services.clock.now().format(kDateTimeFormat)));
  file->commit();
  logWritten(view, path);
  return true;
}

}  // namespace folders
