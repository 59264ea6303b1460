#include <charconv>
#include <optional>

#include "base/printf.h"
#include "base/text.h"
#include "convert/row_text.h"

namespace convert {

namespace {

// No column holds more; a quotation mark that is never closed would otherwise take the rest of the file.
constexpr std::size_t kFieldLimit = 64U * 1024 * 1024;

using Field = std::optional<std::string>;

void putQuoted(std::string& out, std::string_view text) {
  out += '"';
  for (const char c : text) {
    if (c == '"') out += '"';
    out += c;
  }
  out += '"';
}

void putTextCell(std::string& out, std::string_view text) {
  const bool plain = !text.empty() && text.find_first_of(",\"\r\n") == std::string_view::npos &&
                     base::trim(text).size() == text.size();
  if (plain) {
    out += text;
  } else {
    putQuoted(out, text);
  }
}

void putCell(std::string& out, const jet::Value& value) {
  switch (value.type()) {
    case jet::Type::Null:
      return;
    case jet::Type::Boolean:
      out += value.boolean() ? '1' : '0';
      return;
    case jet::Type::Long:
      out += std::to_string(value.integer());
      return;
    case jet::Type::Double:
      out += exactNumber(value.number());
      return;
    case jet::Type::Text:
      putTextCell(out, value.text());
      return;
    case jet::Type::DateTime:
      out += value.dateTime().stored();
      return;
  }
}

class CsvWriter : public RowTextWriter {
 public:
  explicit CsvWriter(const std::vector<jet::FieldDef>& columns) : columns_(columns) {}

  void head(std::string& out) override {
    for (std::size_t i = 0; i < columns_.size(); ++i) {
      if (i > 0) out += ',';
      putTextCell(out, columns_[i].name);
    }
    out += '\n';
  }

  void row(std::string& out, const OldRow& row) override {
    for (std::size_t i = 0; i < row.size(); ++i) {
      if (i > 0) out += ',';
      putCell(out, row[i]);
    }
    out += '\n';
  }

 private:
  const std::vector<jet::FieldDef>& columns_;
};

template <typename Number>
std::optional<Number> parsed(std::string_view text) {
  Number number{};
  const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (fault != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

class CsvReader : public RowTextReader {
 public:
  CsvReader(std::istream& in, const std::vector<jet::FieldDef>& columns) : in_(*in.rdbuf()), columns_(columns) {
    if (in_.sgetc() == 0xEF) skipByteOrderMark();
    if (!readFields()) throw RowTextError("line 1: the names of the columns are missing");
    for (std::size_t i = 0; i < columns_.size(); ++i) {
      if (i >= fields_.size() || fields_[i].value_or("") != columns_[i].name) {
        fail(base::format("column %d is not %s", i + 1, columns_[i].name));
      }
    }
    requireCount();
  }

  bool next(OldRow& row) override {
    do {
      if (!readFields()) return false;
    } while (emptyLine());
    requireCount();
    row.resize(columns_.size());
    for (std::size_t i = 0; i < columns_.size(); ++i) {
      row[i] = fields_[i] ? valueOf(std::move(*fields_[i]), columns_[i]) : jet::Value();
    }
    return true;
  }

  [[nodiscard]] std::int64_t line() const override { return rowLine_; }

 private:
  static constexpr int kEnd = std::char_traits<char>::eof();

  [[noreturn]] void fail(const std::string& what) const {
    throw RowTextError(base::format("line %d: %s", rowLine_, what));
  }

  void requireCount() const {
    if (fields_.size() != columns_.size()) {
      fail(base::format("%d values instead of %d", fields_.size(), columns_.size()));
    }
  }

  // In a table of one column it is a row.
  [[nodiscard]] bool emptyLine() const { return fields_.size() == 1 && !fields_[0] && columns_.size() > 1; }

  // Spreadsheets put the mark in front of UTF-8.
  void skipByteOrderMark() {
    for (int i = 0; i < 3; ++i) in_.sbumpc();
  }

  bool readFields() {
    rowLine_ = nextLine_;
    fields_.clear();
    if (in_.sgetc() == kEnd) return false;
    while (readField()) {
    }
    return true;
  }

  // False when the row ends after the field.
  bool readField() {
    Field& field = fields_.emplace_back();
    if (in_.sgetc() == '"') {
      in_.sbumpc();
      readQuoted(field.emplace());
    }
    for (;;) {
      const int c = in_.sbumpc();
      if (c == ',') return true;
      if (c == '\r' && in_.sgetc() == '\n') continue;
      if (c == '\n' || c == kEnd) {
        ++nextLine_;
        return false;
      }
      if (!field) field.emplace();
      append(*field, c);
    }
  }

  void readQuoted(std::string& text) {
    for (;;) {
      const int c = in_.sbumpc();
      if (c == kEnd) fail("a quoted text does not end");
      if (c == '\n') ++nextLine_;
      if (c == '"') {
        if (in_.sgetc() != '"') return;
        in_.sbumpc();
      }
      append(text, c);
    }
  }

  void append(std::string& text, int c) const {
    if (text.size() >= kFieldLimit) fail("a value is longer than any column holds; is a quotation mark not closed?");
    text += static_cast<char>(c);
  }

  jet::Value valueOf(std::string&& text, const jet::FieldDef& column) const {
    switch (column.type) {
      case jet::Type::Boolean:
        if (text == "0" || text == "1") return text == "1";
        break;
      case jet::Type::Long:
        if (const auto number = parsed<std::int64_t>(text)) return *number;
        break;
      case jet::Type::Double:
        if (const auto number = parsed<double>(text)) return *number;
        break;
      case jet::Type::DateTime:
        if (const auto date = base::DateTime::fromStored(text)) return *date;
        break;
      default:
        return jet::Value(std::move(text));
    }
    fail(base::format("column %s: \"%s\" is not of its type", column.name, text));
  }

  std::streambuf& in_;
  const std::vector<jet::FieldDef>& columns_;
  std::vector<Field> fields_;
  std::int64_t rowLine_ = 1;
  std::int64_t nextLine_ = 1;
};

}  // namespace

std::unique_ptr<RowTextWriter> makeCsvWriter(const std::vector<jet::FieldDef>& columns) {
  return std::make_unique<CsvWriter>(columns);
}

std::unique_ptr<RowTextReader> makeCsvReader(std::istream& in, const std::vector<jet::FieldDef>& columns) {
  return std::make_unique<CsvReader>(in, columns);
}

}  // namespace convert
