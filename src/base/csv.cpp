#include "base/csv.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "base/text.h"

namespace base {

namespace {

constexpr std::string_view kFormulaStarts = "=+-@\t\r";

bool isPlainNumber(std::string_view text) {
  double value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  return error == std::errc() && end == text.data() + text.size() && std::isfinite(value);
}

// Apostrophes before it do not count, so that what is put before a text can be told from what it began with.
bool isFormula(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of('\''), text.size()));
  return !text.empty() && kFormulaStarts.find(text.front()) != std::string_view::npos && !isPlainNumber(text);
}

// Takes the cells of a text one by one.
class Reader {
 public:
  Reader(std::string_view text, char separator) : text_(text), separator_(separator) {}

  [[nodiscard]] bool atEnd() const { return at_ == text_.size(); }

  // The cells up to the end of the line, which is passed.
  std::vector<std::string> row() {
    std::vector<std::string> cells(1);
    while (at_ < text_.size()) {
      const char c = text_[at_++];
      if (c == '\n') break;
      if (c == separator_) {
        cells.emplace_back();
      } else if (c == '"' && trim(cells.back()).empty()) {
        cells.back() = quoted();
      } else if (c != '\r') {
        cells.back() += c;
      }
    }
    for (std::string& cell : cells) {
      if (cell.starts_with('\'') && isFormula(std::string_view(cell).substr(1))) cell.erase(0, 1);
    }
    return cells;
  }

 private:
  // After the opening quotation mark; a missing closing one is at the end of the text.
  std::string quoted() {
    std::string cell;
    while (at_ < text_.size()) {
      const char c = text_[at_++];
      if (c == '"' && (at_ == text_.size() || text_[at_] != '"')) break;
      if (c == '"') ++at_;
      cell += c;
    }
    return cell;
  }

  std::string_view text_;
  char separator_;
  std::size_t at_ = 0;
};

}  // namespace

std::string csvField(std::string text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  return "\"" + replaceAll(std::move(text), "\"", "\"\"") + "\"";
}

std::string csvCell(std::string text) {
  if (isFormula(text)) text.insert(0, 1, '\'');
  return csvField(std::move(text));
}

std::vector<std::string> csvFields(std::string_view line, char separator) {
  std::vector<std::string> fields = Reader(line, separator).row();
  for (std::string& field : fields) field = trim(field);
  return fields;
}

std::vector<std::vector<std::string>> csvRows(std::string_view text) {
  const std::string_view first = text.substr(0, text.find('\n'));
  Reader reader(text, std::ranges::count(first, ';') > std::ranges::count(first, ',') ? ';' : ',');
  std::vector<std::vector<std::string>> rows;
  while (!reader.atEnd()) {
    std::vector<std::string> cells = reader.row();
    if (cells.size() > 1 || !cells.front().empty()) rows.push_back(std::move(cells));
  }
  return rows;
}

}  // namespace base
