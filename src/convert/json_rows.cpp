#include <nlohmann/json.hpp>

#include "base/printf.h"
#include "convert/row_text.h"

namespace convert {

namespace {

std::string quoted(const std::string& text) {
  try {
    return nlohmann::json(text).dump();
  } catch (const nlohmann::json::exception&) {
    throw RowTextError("a text is not UTF-8, which JSON cannot hold; the csv format can");
  }
}

// A whole number among the doubles keeps its point, or its sign would be lost at -0.
std::string doubleText(double value) {
  std::string text = exactNumber(value);
  if (text.find_first_of(".en") == std::string::npos) text += ".0";
  // Neither infinities nor what is no number; a column cannot hold them either.
  return text.find('n') == std::string::npos ? text : "null";
}

std::string textOf(const jet::Value& value) {
  switch (value.type()) {
    case jet::Type::Null:
      return "null";
    case jet::Type::Boolean:
      return value.boolean() ? "true" : "false";
    case jet::Type::Long:
      return std::to_string(value.integer());
    case jet::Type::Double:
      return doubleText(value.number());
    case jet::Type::Text:
      return quoted(value.text());
    case jet::Type::DateTime:
      return '"' + value.dateTime().stored() + '"';
  }
  return "null";
}

class JsonWriter : public RowTextWriter {
 public:
  explicit JsonWriter(const std::vector<jet::FieldDef>& columns) {
    for (const jet::FieldDef& column : columns) {
      starts_.push_back((starts_.empty() ? "{" : ",") + quoted(column.name) + ":");
    }
  }

  void head(std::string&) override {}

  void row(std::string& out, const OldRow& row) override {
    for (std::size_t i = 0; i < row.size(); ++i) out.append(starts_[i]).append(textOf(row[i]));
    out += "}\n";
  }

 private:
  std::vector<std::string> starts_;  // what comes before each value
};

class JsonReader : public RowTextReader {
 public:
  JsonReader(std::istream& in, const std::vector<jet::FieldDef>& columns) : in_(in), columns_(columns) {}

  bool next(OldRow& row) override {
    do {
      if (!std::getline(in_, text_)) return false;
      ++line_;
    } while (text_.find_first_not_of(" \t\r") == std::string::npos);
    const auto object = nlohmann::json::parse(text_, nullptr, false);
    if (!object.is_object()) fail("this is no JSON object");
    row.assign(columns_.size(), jet::Value());
    std::size_t known = 0;
    for (std::size_t i = 0; i < columns_.size(); ++i) {
      const auto found = object.find(columns_[i].name);
      if (found == object.end()) continue;
      ++known;
      row[i] = valueOf(*found, columns_[i]);
    }
    if (known != object.size()) fail("a name is no column of the table");
    return true;
  }

  [[nodiscard]] std::int64_t line() const override { return line_; }

 private:
  [[noreturn]] void fail(const std::string& what) const {
    throw RowTextError(base::format("line %d: %s", line_, what));
  }

  jet::Value valueOf(const nlohmann::json& value, const jet::FieldDef& column) const {
    if (value.is_null()) return {};
    switch (column.type) {
      case jet::Type::Boolean:
        if (value.is_boolean()) return value.get<bool>();
        break;
      case jet::Type::Long:
        if (value.is_number_integer()) return value.get<std::int64_t>();
        break;
      case jet::Type::Double:
        if (value.is_number()) return value.get<double>();
        break;
      case jet::Type::DateTime:
        if (!value.is_string()) break;
        if (const auto date = base::DateTime::fromStored(value.get_ref<const std::string&>())) return *date;
        break;
      default:
        if (value.is_string()) return value.get<std::string>();
    }
    fail(base::format("column %s: the value is not of its type", column.name));
  }

  std::istream& in_;
  const std::vector<jet::FieldDef>& columns_;
  std::string text_;
  std::int64_t line_ = 0;
};

}  // namespace

std::unique_ptr<RowTextWriter> makeJsonWriter(const std::vector<jet::FieldDef>& columns) {
  return std::make_unique<JsonWriter>(columns);
}

std::unique_ptr<RowTextReader> makeJsonReader(std::istream& in, const std::vector<jet::FieldDef>& columns) {
  return std::make_unique<JsonReader>(in, columns);
}

}  // namespace convert
