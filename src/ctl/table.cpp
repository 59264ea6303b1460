#include "ctl/table.h"

#include <utf8proc.h>

#include <algorithm>
#include <ostream>

#include "base/csv.h"
#include "base/printf.h"

namespace ctl {

namespace {

std::string cellText(const Cell& cell) {
  if (const auto* text = std::get_if<std::string>(&cell)) return *text;
  if (const auto* whole = std::get_if<std::int64_t>(&cell)) return std::to_string(*whole);
  return base::format("%.4f", std::get<double>(cell));
}

// Characters that would move the cursor are shown as blanks.
std::string oneLine(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }, ' ');
  return text;
}

}  // namespace

std::size_t displayWidth(std::string_view text) {
  std::size_t width = 0;
  const auto* bytes = reinterpret_cast<const utf8proc_uint8_t*>(text.data());
  auto left = static_cast<utf8proc_ssize_t>(text.size());
  while (left > 0) {
    utf8proc_int32_t codepoint = -1;
    const utf8proc_ssize_t used = std::max<utf8proc_ssize_t>(utf8proc_iterate(bytes, left, &codepoint), 1);
    const bool shownAsBlank = codepoint < 0x20 || codepoint == 0x7F;  // bytes that are no UTF-8 too
    width += shownAsBlank ? 1 : static_cast<std::size_t>(std::max(utf8proc_charwidth(codepoint), 0));
    bytes += used;
    left -= used;
  }
  return width;
}

void Table::print(std::ostream& out, TableFormat format) const {
  switch (format) {
    case TableFormat::Text:
      return printText(out);
    case TableFormat::Csv:
      return printCsv(out);
    case TableFormat::Json:
      return printJson(out);
  }
}

TextColumns::TextColumns(std::vector<std::string> captions, std::vector<bool> right)
    : captions_(std::move(captions)), right_(std::move(right)), widths_(captions_.size()) {
  widen(captions_);
}

void TextColumns::widen(const std::vector<std::string>& cells) {
  for (std::size_t i = 0; i < cells.size(); ++i) widths_[i] = std::max(widths_[i], displayWidth(cells[i]));
}

void TextColumns::printHead(std::ostream& out) const {
  printRow(out, captions_);
  std::vector<std::string> rule;
  for (const std::size_t width : widths_) rule.emplace_back(width, '-');
  printRow(out, rule);
}

void TextColumns::printRow(std::ostream& out, const std::vector<std::string>& cells) const {
  std::string line;
  for (std::size_t i = 0; i < cells.size(); ++i) {
    const std::string padding(widths_[i] - std::min(widths_[i], displayWidth(cells[i])), ' ');
    const std::string cell = oneLine(cells[i]);
    if (i > 0) line += "  ";
    line += right_[i] ? padding + cell : cell + padding;
  }
  line.erase(line.find_last_not_of(' ') + 1);
  out << line << '\n';
}

void printCsvLine(std::ostream& out, const std::vector<std::string>& fields) {
  for (std::size_t i = 0; i < fields.size(); ++i) out << (i > 0 ? "," : "") << base::csvField(fields[i]);
  out << '\n';
}

void Table::printText(std::ostream& out) const {
  // A column of numbers is right-aligned, its caption too.
  std::vector<bool> right(columns_.size(), !rows_.empty());
  std::vector<std::vector<std::string>> texts;
  for (const auto& row : rows_) {
    auto& line = texts.emplace_back();
    for (std::size_t i = 0; i < row.size(); ++i) {
      if (std::holds_alternative<std::string>(row[i])) right[i] = false;
      line.push_back(cellText(row[i]));
    }
  }
  TextColumns columns(columns_, right);
  for (const auto& line : texts) columns.widen(line);
  columns.printHead(out);
  for (const auto& line : texts) columns.printRow(out, line);
}

void Table::printCsv(std::ostream& out) const {
  printCsvLine(out, columns_);
  for (const auto& row : rows_) {
    std::vector<std::string> cells;
    for (const Cell& cell : row) cells.push_back(cellText(cell));
    printCsvLine(out, cells);
  }
}

}  // namespace ctl
