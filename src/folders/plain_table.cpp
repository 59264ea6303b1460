#include "folders/plain_table.h"

#include <cmath>

#include "base/csv.h"
#include "base/printf.h"
#include "base/text.h"
#include "folders/exports.h"
#include "folders/list_report.h"
#include "folders/pdf_pages.h"
#include "folders/report_file.h"
#include "folders/report_page.h"
#include "folders/view_log.h"
#include "folders/xlsx_book.h"
#include "print/pdf_table.h"

namespace folders {

namespace {

// A number with so many decimals, grouped by thousands.
std::string grouped(double number, int decimals, const Separators& separators) {
  constexpr int kMostDecimals = 6;
  std::string digits = base::format("%.6f", std::abs(number));
  if (decimals < kMostDecimals) {
    const double factor = std::pow(10, decimals);
    digits = base::format("%.6f", std::round(std::abs(number) * factor) / factor);
  }
  const std::size_t point = digits.find('.');
  std::string text = digits.substr(0, point);
  for (std::size_t at = text.size(); at > 3; at -= 3) text.insert(at - 3, 1, separators.thousands);
  if (decimals > 0) text += separators.decimal + digits.substr(point + 1, static_cast<std::size_t>(decimals));
  const bool zero = text.find_first_of("123456789") == std::string::npos;
  return number < 0 && !zero ? "-" + text : text;
}

std::string csvText(const PlainColumn& column, const PlainCell& cell) {
  if (const auto* number = std::get_if<double>(&cell); number != nullptr && column.kind == CellKind::Number) {
    return plainNumber(*number);
  }
  if (const auto* moment = std::get_if<base::DateTime>(&cell)) return moment->stored();
  return base::csvCell(textOf(column, cell, {}));
}

bool writeCsv(const PlainTable& table, const FolderServices& services, const std::filesystem::path& path) {
  const auto file = openReport(path, services.person);
  if (!file) return false;
  std::string line = "\xEF\xBB\xBF";
  const char* separator = "";
  for (const PlainColumn& column : table.columns) {
    line += separator + base::csvCell(column.heading);
    separator = ",";
  }
  file->write(line + "\r\n");
  for (const PlainRow& row : table.rows) {
    line.clear();
    for (std::size_t i = 0; i < row.cells.size(); ++i)
      line += (i > 0 ? "," : "") + csvText(table.columns[i], row.cells[i]);
    file->write(line + "\r\n");
  }
  file->commit();
  return true;
}

bool writeXlsx(const PlainTable& table, const FolderServices& services, const std::filesystem::path& path) {
  std::vector<std::string> headings;
  for (const PlainColumn& column : table.columns) headings.push_back(column.heading);
  const auto book = openXlsx(path, std::move(headings), services.person);
  if (!book) return false;
  for (const PlainRow& row : table.rows) {
    book->beginRow();
    for (std::size_t i = 0; i < row.cells.size(); ++i) {
      if (const auto* text = std::get_if<std::string>(&row.cells[i])) book->text(i, *text);
      if (const auto* moment = std::get_if<base::DateTime>(&row.cells[i])) book->dateTime(i, *moment);
      const auto* number = std::get_if<double>(&row.cells[i]);
      if (number == nullptr) continue;
      table.columns[i].kind == CellKind::Duration ? book->duration(i, *number) : book->number(i, *number);
    }
  }
  book->close();
  return true;
}

class PlainPage {
 public:
  PlainPage(const PlainTable& table, const FolderServices& services, ReportFile& file)
      : table_(table), services_(services), file_(file), separators_(separatorsOf(services.texts)) {}

  void write(const std::string& title) {
    file_.writePage(kPageHead);
    file_.writePage(reportHeader(title, table_.title, services_));
    file_.writePage(filterTable(services_, table_.overCalls));
    for (std::size_t row = 0; row < table_.rows.size(); ++row) {
      if (row % kRowsPerTable == 0) startTable(row > 0);
      file_.write("<TR>\n");
      writeCells(table_.rows[row]);
      file_.write("</TR>\n");
    }
    if (table_.rows.empty()) startTable(false);
    file_.write("</TABLE>\n");
    for (const std::string& remark : table_.remarks) {
      file_.write("<p style='font-size:9.0pt'>");
      file_.writeText(remark);
      file_.write("</p>\n");
    }
    file_.writePage(reportFooter(services_) + "</BODY></HTML>");
  }

 private:
  void startTable(bool again) {
    if (again) file_.write("</TABLE>\n<hr>\n");
    file_.writePage(tableOpening(services_.config));
    for (const PlainColumn& column : table_.columns) {
      file_.writePage(base::format("<TH align=%s nowrap>\n%s&nbsp;</TH>\n", alignmentName(alignmentOf(column)),
                                   base::escapeHtml(column.heading)));
    }
    file_.write("</TR>\n");
  }

  void writeCells(const PlainRow& row) {
    for (std::size_t i = 0; i < row.cells.size(); ++i) {
      file_.write(base::format("<TD align=%s nowrap>\n%s", alignmentName(alignmentOf(table_.columns[i])),
                               row.stressed ? "<b>" : ""));
      file_.writeText(textOf(table_.columns[i], row.cells[i], separators_));
      file_.write(row.stressed ? "</b>&nbsp;</TD>\n" : "&nbsp;</TD>\n");
    }
  }

  const PlainTable& table_;
  const FolderServices& services_;
  ReportFile& file_;
  Separators separators_;
};

// A list of calls has the title of the call report.
std::string pageTitle(const PlainTable& table, const FolderServices& services) {
  return table.overCalls ? services.texts.Translate("IDS_CALLS_REPORT") : table.title;
}

bool writePage(const PlainTable& table, const FolderServices& services, const std::filesystem::path& path) {
  const auto file = openReport(path, services.person);
  if (!file) return false;
  PlainPage(table, services, *file).write(pageTitle(table, services));
  file->commit();
  return true;
}

bool writeSheets(const PlainTable& table, const FolderServices& services, const std::filesystem::path& path) {
  return writePdf(path, {table.title, sheetFoot(services), true}, services.person, [&](print::PdfSheets& sheets) {
    drawListHead(sheets, pageTitle(table, services), table.title, table.overCalls, services);
    std::vector<print::TableColumn> columns;
    for (const PlainColumn& column : table.columns) {
      columns.push_back(
          {column.heading, alignmentOf(column) == Alignment::Right ? print::Align::Right : print::Align::Left});
    }
    const Separators separators = separatorsOf(services.texts);
    print::PdfTable drawn(sheets, columns);
    for (const PlainRow& row : table.rows) {
      std::vector<std::string> texts;
      for (std::size_t i = 0; i < row.cells.size(); ++i) {
        texts.push_back(textOf(table.columns[i], row.cells[i], separators));
      }
      drawn.add(std::move(texts));
    }
    drawn.finish();
    for (const std::string& remark : table.remarks) {
      sheets.moveDown(6);
      sheets.paragraph(remark, {.size = 9, .lines = 0});
    }
  });
}

}  // namespace

Alignment alignmentOf(const PlainColumn& column) {
  return column.kind == CellKind::Number || column.kind == CellKind::Duration ? Alignment::Right : Alignment::Left;
}

std::string textOf(const PlainColumn& column, const PlainCell& cell, const Separators& separators) {
  if (const auto* text = std::get_if<std::string>(&cell)) return *text;
  if (const auto* moment = std::get_if<base::DateTime>(&cell)) return moment->format(kDateTimeFormat);
  const auto* number = std::get_if<double>(&cell);
  if (number == nullptr) return {};
  if (column.kind == CellKind::Duration) return durationText(std::llround(*number));
  return grouped(*number, column.decimals, separators) + column.unit;
}

bool writePlainTable(const PlainTable& table, const FolderServices& services, const std::filesystem::path& file) {
  const std::string ending = base::foldAscii(file.extension().string());
  const auto write = ending == ".csv"    ? writeCsv
                     : ending == ".xlsx" ? writeXlsx
                     : ending == ".pdf"  ? writeSheets
                                         : writePage;
  if (!write(table, services, file)) return false;
  if (table.overCalls) logWritten(services, table.title, file);
  return true;
}

}  // namespace folders
