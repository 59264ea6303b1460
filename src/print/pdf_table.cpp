#include "print/pdf_table.h"

#include <algorithm>
#include <numeric>

namespace print {

namespace {

constexpr std::size_t kMeasuredRows = 300;
constexpr double kPadding = 3;  // left and right of a text
constexpr double kRowGap = 2.5;
constexpr int kMostLines = 3;
constexpr double kSmallestLetters = 3;  // smaller ones are cut instead

// The widest of the text's words: what cannot be broken at a blank.
double widestWord(PdfSheets& sheets, const std::string& text, const TextStyle& style) {
  double widest = 0;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find(' ', at), text.size());
    if (end > at) widest = std::max(widest, sheets.textWidth(std::string_view(text).substr(at, end - at), style));
    at = end + 1;
  }
  return widest;
}

}  // namespace

PdfTable::PdfTable(PdfSheets& sheets, std::vector<TableColumn> columns)
    : sheets_(sheets), columns_(std::move(columns)) {
  for (const TableColumn& column : columns_) headings_.push_back(column.heading);
}

void PdfTable::add(std::vector<std::string> cells, Row kind) {
  if (!widths_.empty()) return draw({std::move(cells), kind});
  held_.push_back({std::move(cells), kind});
  if (held_.size() == kMeasuredRows) chooseWidths();
}

void PdfTable::finish() {
  if (widths_.empty()) chooseWidths();
}

void PdfTable::chooseWidths() {
  const std::size_t count = columns_.size();
  std::vector<double> wanted(count);
  std::vector<double> least(count);
  const double reference = size_;
  for (std::size_t i = 0; i < count; ++i) {
    const TextStyle bold = {.size = reference, .bold = true};
    const bool breaks = columns_[i].align == Align::Left;
    wanted[i] = sheets_.textWidth(headings_[i], bold);
    least[i] = widestWord(sheets_, headings_[i], bold);
    for (const HeldRow& row : held_) {
      const TextStyle style = {.size = reference, .bold = row.kind == Row::Total};
      const double width = sheets_.textWidth(row.cells[i], style);
      wanted[i] = std::max(wanted[i], width);
      least[i] = std::max(least[i], breaks ? std::min(width, widestWord(sheets_, row.cells[i], style)) : width);
    }
    wanted[i] += 2 * kPadding;
    least[i] += 2 * kPadding;
  }
  const double room = sheets_.width();
  const double sumWanted = std::accumulate(wanted.begin(), wanted.end(), 0.0);
  const double sumLeast = std::accumulate(least.begin(), least.end(), 0.0);
  widths_ = least;
  if (sumWanted <= room) {
    for (std::size_t i = 0; i < count; ++i) widths_[i] = wanted[i] * room / sumWanted;
  } else if (sumLeast <= room) {
    const double share = (room - sumLeast) / (sumWanted - sumLeast);
    for (std::size_t i = 0; i < count; ++i) widths_[i] = least[i] + (wanted[i] - least[i]) * share;
  } else {
    const double padding = 2 * kPadding * static_cast<double>(count);
    const double shrink = (room - padding) / (sumLeast - padding);
    constexpr double kSlack = 0.98;  // smaller letters are a little wider for their size
    size_ = std::max(kSmallestLetters, size_ * shrink * kSlack);
    for (double& width : widths_) width = (width - 2 * kPadding) * shrink + 2 * kPadding;
  }
  drawHeadings();
  for (const HeldRow& row : held_) draw(row);
  held_.clear();
}

TextStyle PdfTable::styleOf(bool bold, std::size_t column) const {
  return {.size = size_, .bold = bold, .lines = columns_[column].align == Align::Left || bold ? kMostLines : 1};
}

double PdfTable::heightOf(const std::vector<std::string>& cells, bool bold) {
  double height = sheets_.textHeight("0", sheets_.width(), {.size = size_});
  for (std::size_t i = 0; i < cells.size(); ++i) {
    const TextStyle style = styleOf(bold, i);
    if (!cells[i].empty() && style.lines > 1) height = std::max(height, heightOfText(i, cells[i], style));
  }
  return height;
}

// Names of areas, departments and clients come again and again, and laying out a text is what takes the time.
double PdfTable::heightOfText(std::size_t column, const std::string& text, const TextStyle& style) {
  constexpr std::size_t kMostKept = 20000;
  if (style.bold) return sheets_.textHeight(text, widths_[column] - 2 * kPadding, style);
  if (heights_.size() > kMostKept) heights_.clear();
  const auto [kept, isNew] = heights_.try_emplace(std::to_string(column) + " " + text, 0);
  if (isNew) kept->second = sheets_.textHeight(text, widths_[column] - 2 * kPadding, style);
  return kept->second;
}

void PdfTable::drawCells(const std::vector<std::string>& cells, bool bold, double height) {
  double x = sheets_.left();
  for (std::size_t i = 0; i < cells.size(); ++i) {
    if (!cells[i].empty()) {
      sheets_.text(x + kPadding, sheets_.y() + kRowGap, widths_[i] - 2 * kPadding, cells[i], styleOf(bold, i),
                   columns_[i].align);
    }
    x += widths_[i];
  }
  sheets_.moveDown(height + 2 * kRowGap);
}

void PdfTable::drawHeadings() {
  const double height = heightOf(headings_, true);
  sheets_.need(4 * (height + 2 * kRowGap));  // never alone at the foot of a sheet
  drawCells(headings_, true, height);
  sheets_.rule(sheets_.left(), sheets_.y() - 0.5, sheets_.width(), 1, kInk);
}

void PdfTable::draw(const HeldRow& row) {
  const bool total = row.kind == Row::Total;
  const double height = heightOf(row.cells, total);
  if (sheets_.need(height + 2 * kRowGap)) drawHeadings();
  if (total) sheets_.rule(sheets_.left(), sheets_.y(), sheets_.width(), 1, kInk);
  drawCells(row.cells, total, height);
  if (!total) sheets_.rule(sheets_.left(), sheets_.y(), sheets_.width(), 0.4, kRule);
}

}  // namespace print
