#include "folders/list_report.h"

#include "base/printf.h"
#include "base/text.h"
#include "folders/report_file.h"
#include "folders/report_page.h"
#include "folders/view_log.h"

namespace folders {

namespace {

class ListPage {
 public:
  ListPage(FolderView& view, ReportFile& file) : view_(view), file_(file), totals_(view) {
    for (const ViewColumn& column : view.columns()) {
      headings_.push_back(base::escapeHtml(printedHeading(column, view.services().config)));
      const char* const before = cellOpenings_.empty() ? "<TR>\n" : "&nbsp;</TD>\n";
      cellOpenings_.push_back(base::format("%s<TD align=%s nowrap>\n", before, alignmentName(column.alignment)));
    }
    opening_ = tableOpening(view.services().config);
  }

  void write() {
    const FolderServices& services = view_.services();
    file_.writePage(kPageHead);
    file_.writePage(reportHeader(services.texts.Translate("IDS_CALLS_REPORT"), view_.name(), services));
    file_.writePage(filterTable(services, view_.folder().definition().condition == ConditionSource::CallFilter));
    view_.forEachRow([this](std::span<const CellValue> row) {
      writeRow(row);
      return true;
    });
    if (rows_ == 0) startTable();
    writeTotals();
    file_.writePage(base::format("</TABLE>%s</BODY></HTML>", reportFooter(services)));
  }

 private:
  void headingCell(std::size_t column, std::string_view content) {
    const std::string_view alignment = alignmentName(view_.columns()[column].alignment);
    file_.writePage(base::format("<TH align=%s nowrap>\n%s</TH>\n", alignment, content));
  }

  void startTable() {
    if (rows_ > 0) file_.write("</TABLE>\n<hr>\n");
    file_.writePage(opening_);
    for (std::size_t i = 0; i < headings_.size(); ++i) {
      headingCell(i, base::format("%s&nbsp;", headings_[i]));
    }
    file_.write("</TR>\n");
  }

  void writeRow(std::span<const CellValue> row) {
    if (rows_ % kRowsPerTable == 0) startTable();
    for (std::size_t i = 0; i < row.size(); ++i) {
      file_.write(cellOpenings_[i]);
      file_.writeText(view_.text(i, row[i]));
    }
    file_.write("&nbsp;</TD>\n</TR>\n");
    totals_.add(row);
    ++rows_;
  }

  void writeTotals() {
    file_.write("<TR>\n");
    for (std::size_t i = 0; i < headings_.size(); ++i) {
      // The blank after the total lines it up with the cells above.
      headingCell(i, base::format("%s&nbsp;", base::escapeHtml(totals_.textWithCurrency(i))));
    }
    file_.write("</TR>\n");
  }

  FolderView& view_;
  ReportFile& file_;
  FolderView::Totals totals_;
  std::vector<std::string> headings_;
  std::vector<std::string> cellOpenings_;  // the first one begins the row, each further one ends the cell before
  std::string opening_;                    // of a table
  std::int64_t rows_ = 0;
};

}  // namespace

bool writeListReport(FolderView& view, const std::filesystem::path& path) {
  const auto file = openReport(path, view.services().person);
  if (!file) return false;
  ListPage(view, *file).write();
  file->commit();
  logWritten(view, path);
  return true;
}

}  // namespace folders
