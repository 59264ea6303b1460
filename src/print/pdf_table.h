#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "print/pdf_sheets.h"

namespace print {

struct TableColumn {
  std::string heading;
  Align align = Align::Left;
};

// A table over the whole width. Columns get the widths that the headings and the first rows ask for; left-aligned texts
// take up to three lines where there is no room, then the letters grow smaller. The headings are on every sheet.
class PdfTable {
 public:
  PdfTable(PdfSheets& sheets, std::vector<TableColumn> columns);

  enum class Row { Body, Total };
  // One text a column.
  void add(std::vector<std::string> cells, Row kind = Row::Body);
  // Draws what is held back, and nothing more may be added.
  void finish();

 private:
  struct HeldRow {
    std::vector<std::string> cells;
    Row kind;
  };
  void chooseWidths();
  [[nodiscard]] TextStyle styleOf(bool bold, std::size_t column) const;
  [[nodiscard]] double heightOf(const std::vector<std::string>& cells, bool bold);
  [[nodiscard]] double heightOfText(std::size_t column, const std::string& text, const TextStyle& style);
  void drawCells(const std::vector<std::string>& cells, bool bold, double height);
  void drawHeadings();
  void draw(const HeldRow& row);

  PdfSheets& sheets_;
  std::vector<TableColumn> columns_;
  std::vector<std::string> headings_;
  std::vector<double> widths_;                       // padding included; empty until they are chosen
  double size_ = 8;                                  // of the letters
  std::unordered_map<std::string, double> heights_;  // by column and text
  std::vector<HeldRow> held_;                        // rows that the widths are chosen by
};

}  // namespace print
