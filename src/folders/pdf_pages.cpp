#include "folders/pdf_pages.h"

#include <algorithm>
#include <stdexcept>

#include "base/printf.h"
#include "base/version.h"
#include "filter/description.h"
#include "folders/report_file.h"
#include "folders/report_page.h"
#include "folders/summary_groups.h"
#include "folders/summary_page.h"
#include "folders/view_log.h"
#include "print/pdf_table.h"

namespace folders {

namespace {

using print::Align;
using print::PdfSheets;
using print::PdfTable;
using print::TextStyle;

constexpr TextStyle kTitle = {.size = 14, .bold = true};
constexpr TextStyle kPlain = {.size = 8};
constexpr TextStyle kFaint = {.size = 8, .color = print::kFaint};
constexpr TextStyle kBold = {.size = 8, .bold = true};
constexpr double kGap = 8;

Align alignOf(Alignment alignment) {
  switch (alignment) {
    case Alignment::Right:
      return Align::Right;
    case Alignment::Center:
      return Align::Center;
    case Alignment::Left:
      break;
  }
  return Align::Left;
}

// A line with a text at either end.
void twoTexts(PdfSheets& sheets, const std::string& left, const std::string& right, const TextStyle& style) {
  const double half = sheets.width() / 2 - kGap;
  const double height = std::max(sheets.textHeight(left, half, style), sheets.textHeight(right, half, style));
  sheets.need(height);
  sheets.text(sheets.left(), sheets.y(), half, left, style);
  sheets.text(sheets.left() + sheets.width() - half, sheets.y(), half, right, style, Align::Right);
  sheets.moveDown(height + 1);
}

void drawFilter(PdfSheets& sheets, const FolderServices& services) {
  if (!services.filter.active()) return;
  filter::FilterDescription description(services.filter, services.texts, services.currencies);
  sheets.paragraph(description.plainText(), kFaint);
  sheets.moveDown(kGap);
}

void fillList(PdfSheets& sheets, FolderView& view) {
  std::vector<print::TableColumn> columns;
  for (const ViewColumn& column : view.columns()) {
    columns.push_back({printedHeading(column, view.services().config), alignOf(column.alignment)});
  }
  PdfTable table(sheets, columns);
  FolderView::Totals totals(view);
  view.forEachRow([&](std::span<const CellValue> row) {
    std::vector<std::string> texts;
    for (std::size_t i = 0; i < row.size(); ++i) texts.push_back(view.text(i, row[i]));
    table.add(std::move(texts));
    totals.add(row);
    return true;
  });
  std::vector<std::string> sums;
  for (std::size_t i = 0; i < columns.size(); ++i) sums.push_back(totals.textWithCurrency(i));
  table.add(std::move(sums), PdfTable::Row::Total);
  table.finish();
}

void drawBillHead(PdfSheets& sheets, const BillRequest& request, const FolderServices& services) {
  constexpr std::string_view kShown = "%d.%m.%Y %H:%M";
  const std::string period = base::format("%s - %s", request.from.format(kShown), request.to.format(kShown));
  twoTexts(sheets, organization(services, foundation::keys::ResellerName), {}, {.size = 16, .bold = true});
  twoTexts(sheets, headerTexts({}, services).address, organization(services, foundation::keys::OrganizationTel),
           kFaint);
  twoTexts(sheets, organization(services, foundation::keys::OrganizationCF),
           organization(services, foundation::keys::OrganizationEmail), kFaint);
  twoTexts(sheets, {}, organization(services, foundation::keys::OrganizationWeb), kFaint);
  sheets.moveDown(4);
  sheets.rule(sheets.left(), sheets.y(), sheets.width(), 1.5, print::kAccent);
  sheets.moveDown(14);
  const double top = sheets.y();
  sheets.text(sheets.left(), top, sheets.width() / 2, "☎ " + request.extension, kTitle);
  sheets.text(sheets.left() + sheets.width() / 2, top + 4, sheets.width() / 2, period, {.size = 9, .bold = true},
              Align::Right);
  sheets.moveDown(28);
}

void drawBillSums(PdfSheets& sheets, const std::vector<BillSum>& sums) {
  constexpr TextStyle kSum = {.size = 10};
  constexpr std::size_t kTotal = 2;
  const double width = sheets.width() * 0.45;
  const double left = sheets.left() + sheets.width() - width;
  sheets.moveDown(14);
  sheets.need(static_cast<double>(sums.size()) * 20);
  for (std::size_t i = 0; i < sums.size(); ++i) {
    const TextStyle style = {.size = kSum.size, .bold = i == kTotal};
    const std::string label = sums[i].remark.empty() ? sums[i].label : sums[i].label + " " + sums[i].remark;
    sheets.text(left, sheets.y() + 3, width / 2, label, style);
    sheets.text(left + width / 2, sheets.y() + 3, width / 2, sums[i].value, style, Align::Right);
    sheets.moveDown(18);
    sheets.rule(left, sheets.y(), width, i == kTotal ? 1 : 0.4, i == kTotal ? print::kInk : print::kRule);
  }
}

}  // namespace

std::string sheetFoot(const FolderServices& services) {
  const FooterTexts texts = footerTexts(services);
  return base::format("%s   %s   %s %s", texts.program, texts.version, texts.urlLabel, texts.url);
}

bool writePdf(const std::filesystem::path& path, const PdfSheets::Setup& setup, platform::Operator& person,
              const std::function<void(PdfSheets&)>& draw) {
  const auto file = openReport(path, person);
  if (!file) return false;
  PdfSheets sheets([&file](std::string_view bytes) { file->write(bytes); }, setup);
  draw(sheets);
  sheets.finish();
  file->commit();
  return true;
}

void drawBars(PdfSheets& sheets, std::span<const Bar> bars) {
  constexpr double kRow = 15;
  constexpr double kBarHeight = 10;
  double largest = 0;
  double labels = 0;
  double values = 0;
  for (const Bar& bar : bars) {
    largest = std::max(largest, bar.value);
    labels = std::max(labels, sheets.textWidth(bar.label, kPlain));
    values = std::max(values, sheets.textWidth(bar.valueText, kPlain));
  }
  labels = std::min(labels, sheets.width() * 0.4);
  const double longest = sheets.width() - labels - values - 12;
  for (const Bar& bar : bars) {
    sheets.need(kRow);
    const double length = largest > 0 ? std::max(0.0, bar.value) / largest * longest : 0;
    sheets.text(sheets.left(), sheets.y(), labels, bar.label, kPlain, Align::Right);
    sheets.box(sheets.left() + labels + 6, sheets.y(), length, kBarHeight, print::kAccent);
    sheets.text(sheets.left() + labels + length + 12, sheets.y(), values + 1, bar.valueText, kPlain);
    sheets.moveDown(kRow);
  }
}

void drawListHead(PdfSheets& sheets, const std::string& title, std::string_view name, bool overCalls,
                  const FolderServices& services) {
  const HeaderTexts texts = headerTexts(name, services);
  sheets.paragraph(title, kTitle, Align::Center);
  sheets.moveDown(4);
  twoTexts(sheets, texts.name, texts.address, kPlain);
  twoTexts(sheets, texts.date, texts.fiscalCode, kPlain);
  sheets.moveDown(kGap);
  if (overCalls) drawFilter(sheets, services);
}

bool writeListPdf(FolderView& view, const std::filesystem::path& file) {
  return writeListSheets(view, file, {});
}

bool writeListSheets(FolderView& view, const std::filesystem::path& file, const std::optional<print::Sheet>& sheet) {
  const FolderServices& services = view.services();
  const std::string title = services.texts.Translate("IDS_CALLS_REPORT");
  const PdfSheets::Setup setup = {title + " - " + view.name(), sheetFoot(services), true, sheet};
  const bool written = writePdf(file, setup, services.person, [&](PdfSheets& sheets) {
    drawListHead(sheets, title, view.name(), view.folder().definition().condition == ConditionSource::CallFilter,
                 services);
    fillList(sheets, view);
  });
  if (written) logWritten(view, file);
  return written;
}

bool writeBillPdf(const BillRequest& request, const FolderServices& services, const ValueFormatter& formatter,
                  const std::filesystem::path& file, BillTotals* totals) {
  const PdfSheets::Setup setup = {request.extension, sheetFoot(services), false};
  const bool written = writePdf(file, setup, services.person, [&](PdfSheets& sheets) {
    drawBillHead(sheets, request, services);
    std::vector<print::TableColumn> columns;
    for (const BillHeading& heading : billHeadings(services)) {
      columns.push_back({heading.text, alignOf(heading.alignment)});
    }
    PdfTable table(sheets, columns);
    const BillTotals sums =
        readBill(request, services, formatter, [&](std::vector<std::string> texts) { table.add(std::move(texts)); });
    table.finish();
    drawBillSums(sheets, billSums(sums, services, formatter));
    if (totals != nullptr) *totals = sums;
  });
  if (written) logWritten(services, services.texts.Translate("IDS_EXTENSION") + " " + request.extension, file);
  return written;
}

bool writeSummaryPdf(FolderView& view, const std::filesystem::path& file) {
  return writeSummarySheets(view, file, {});
}

bool writeSummarySheets(FolderView& view, const std::filesystem::path& file, const std::optional<print::Sheet>& sheet) {
  requireStatistic(view);
  const FolderServices& services = view.services();
  const SummaryGroups groups(view);
  const std::string caption = view.folder().caption();
  const PdfSheets::Setup setup = {caption, sheetFoot(services), false, sheet};
  const bool written = writePdf(file, setup, services.person, [&](PdfSheets& sheets) {
    sheets.paragraph(caption, kTitle);
    sheets.paragraph(groups.chartTitle(), kFaint);
    sheets.moveDown(kGap);
    drawFilter(sheets, services);
    drawBars(sheets, groups.bars());
    sheets.paragraph(groups.othersText(), kFaint);
    sheets.moveDown(kGap);
    std::vector<print::TableColumn> columns;
    for (const std::string& heading : groups.headings()) {
      columns.push_back({heading, columns.empty() ? Align::Left : Align::Right});
    }
    PdfTable table(sheets, columns);
    for (auto& row : groups.rows()) table.add(row);
    table.add(groups.totals(), PdfTable::Row::Total);
    table.finish();
  });
  if (written) logWritten(view, file);
  return written;
}

}  // namespace folders
