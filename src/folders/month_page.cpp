#include "folders/month_page.h"

#include <algorithm>

#include "base/printf.h"
#include "base/text.h"
#include "folders/month_texts.h"
#include "folders/pdf_pages.h"
#include "folders/report_file.h"
#include "folders/view_log.h"
#include "print/pdf_table.h"

namespace folders {

namespace {

constexpr std::string_view kStyle =
    "body{font:15px/1.45 system-ui,sans-serif;max-width:60rem;margin:2rem auto;padding:0 1rem;color:#1b1f24}"
    "h1{font-size:1.6rem;margin:0 0 1rem}h2{font-size:1.05rem;margin:1.8rem 0 .5rem}p{margin:.3rem 0}"
    "table{border-collapse:collapse;width:100%;font-variant-numeric:tabular-nums}"
    "th,td{padding:.35rem .6rem;border-bottom:1px solid #d5dae0;text-align:right}"
    "th:first-child,td:first-child{text-align:left}td:nth-child(2){font-weight:600}"
    "svg{width:100%;height:auto;font-size:13px}svg rect{fill:#2f6fb0}svg .label{text-anchor:end}"
    "svg.days text{text-anchor:middle;font-size:12px}"
    "footer{color:#59636e;font-size:.85rem;margin-top:2rem}"
    "@page{size:A4;margin:15mm}@media print{body{margin:0;max-width:none;font-size:12px}h2,svg{break-inside:avoid}"
    "h2{break-after:avoid}svg rect{print-color-adjust:exact;-webkit-print-color-adjust:exact}}";

double largestOf(const std::vector<Bar>& bars) {
  double largest = 0;
  for (const Bar& bar : bars) largest = std::max(largest, bar.value);
  return largest;
}

std::string columnsSvg(const std::vector<Bar>& bars, const std::string& title) {
  constexpr double kWidth = 800;
  constexpr double kHeight = 160;
  const double step = kWidth / static_cast<double>(bars.size());
  const double largest = largestOf(bars);
  std::string svg = base::format("<svg class=\"days\" viewBox=\"0 0 %.0f %.0f\" role=\"img\" aria-label=\"%s\">\n",
                                 kWidth, kHeight + 18, base::escapeHtml(title));
  for (std::size_t i = 0; i < bars.size(); ++i) {
    const double height = largest > 0 ? std::max(0.0, bars[i].value) / largest * kHeight : 0;
    const double left = static_cast<double>(i) * step;
    svg += base::format("<rect x=\"%.1f\" y=\"%.1f\" width=\"%.1f\" height=\"%.1f\"><title>%s: %s</title></rect>",
                        left + 2, kHeight - height, step - 4, height, base::escapeHtml(bars[i].label),
                        base::escapeHtml(bars[i].valueText));
    svg += base::format("<text x=\"%.1f\" y=\"%.0f\">%s</text>\n", left + step / 2, kHeight + 14,
                        base::escapeHtml(bars[i].label));
  }
  return svg + "</svg>\n";
}

std::string cells(const std::vector<std::string>& texts, std::string_view tag) {
  std::string row = "<tr>";
  for (const std::string& text : texts) row += base::format("<%s>%s</%s>", tag, base::escapeHtml(text), tag);
  return row + "</tr>\n";
}

std::string section(const std::string& title, const std::string& content) {
  return (title.empty() ? std::string() : "<h2>" + base::escapeHtml(title) + "</h2>\n") + content;
}

std::string pageOf(const MonthTexts& texts, const FolderServices& services) {
  const std::string title = base::escapeHtml(texts.title());
  std::string page =
      "<!DOCTYPE html>\n<html><head><meta charset=\"utf-8\"><meta name=\"viewport\" "
      "content=\"width=device-width\"><title>" +
      title + "</title><style>" + std::string(kStyle) + "</style></head><body>\n<h1>" + title + "</h1>\n";
  page += "<table>\n" + cells(texts.comparisonHeadings(), "th");
  for (const auto& row : texts.comparison()) page += cells(row, "td");
  page += "</table>\n";
  const std::string days = texts.heading("IDS_MONTH_DAYS") + ": " + texts.measure();
  page += section(days, columnsSvg(texts.days(), days));
  for (const MonthTexts::Dearest& dearest : texts.dearest()) {
    page += section(dearest.title, barChartSvg(dearest.bars, dearest.title));
  }
  for (const MonthTexts::Sentence& one : texts.sentences()) {
    page += section(one.title, "<p>" + base::escapeHtml(one.text) + "</p>\n");
  }
  return page + "<footer>" + base::escapeHtml(sheetFoot(services)) + ", " +
         services.clock.now().format(kDateTimeFormat) + "</footer>\n</body></html>\n";
}

void drawColumns(print::PdfSheets& sheets, const std::vector<Bar>& bars) {
  constexpr double kHeight = 110;
  constexpr print::TextStyle kLabel = {.size = 7, .color = print::kFaint};
  sheets.need(kHeight + 16);
  const double step = sheets.width() / static_cast<double>(bars.size());
  const double largest = largestOf(bars);
  for (std::size_t i = 0; i < bars.size(); ++i) {
    const double height = largest > 0 ? std::max(0.0, bars[i].value) / largest * kHeight : 0;
    const double left = sheets.left() + static_cast<double>(i) * step;
    sheets.box(left + 1.5, sheets.y() + kHeight - height, step - 3, height, print::kAccent);
    sheets.text(left, sheets.y() + kHeight + 3, step, bars[i].label, kLabel, print::Align::Center);
  }
  sheets.moveDown(kHeight + 16);
}

void drawMonth(print::PdfSheets& sheets, const MonthTexts& texts) {
  constexpr print::TextStyle kTitle = {.size = 16, .bold = true};
  constexpr print::TextStyle kHeading = {.size = 10.5, .bold = true};
  const auto heading = [&](const std::string& title, double room) {
    sheets.moveDown(12);
    sheets.need(room);
    if (!title.empty()) sheets.paragraph(title, kHeading);
    sheets.moveDown(5);
  };
  sheets.paragraph(texts.title(), kTitle);
  sheets.moveDown(8);
  std::vector<print::TableColumn> columns;
  for (const std::string& column : texts.comparisonHeadings()) {
    columns.push_back({column, columns.empty() ? print::Align::Left : print::Align::Right});
  }
  print::PdfTable table(sheets, columns);
  for (auto& row : texts.comparison()) table.add(row);
  table.finish();
  heading(texts.heading("IDS_MONTH_DAYS") + ": " + texts.measure(), 160);
  drawColumns(sheets, texts.days());
  for (const MonthTexts::Dearest& dearest : texts.dearest()) {
    heading(dearest.title, 80);
    drawBars(sheets, dearest.bars);
  }
  for (const MonthTexts::Sentence& one : texts.sentences()) {
    heading(one.title, 60);
    sheets.paragraph(one.text, {.size = 9});
  }
}

}  // namespace

bool writeMonthPage(base::DateTime day, const FolderServices& services, const ValueFormatter& formatter,
                    const std::filesystem::path& path) {
  const MonthFigures figures = monthFigures(day, services, formatter);
  const auto file = openReport(path, services.person);
  if (!file) return false;
  file->write(pageOf(MonthTexts(figures, services, formatter), services));
  file->commit();
  logWritten(services, monthTitle(day, formatter), path);
  return true;
}

bool writeMonthPdf(base::DateTime day, const FolderServices& services, const ValueFormatter& formatter,
                   const std::filesystem::path& path) {
  const MonthFigures figures = monthFigures(day, services, formatter);
  const MonthTexts texts(figures, services, formatter);
  const bool written = writePdf(path, {texts.title(), sheetFoot(services), false}, services.person,
                                [&](print::PdfSheets& sheets) { drawMonth(sheets, texts); });
  if (written) logWritten(services, texts.title(), path);
  return written;
}

}  // namespace folders
