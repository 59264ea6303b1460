#pragma once

#include <cstdint>
#include <istream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "convert/old_table.h"
#include "jet/table_def.h"

namespace convert {

enum class TextFormat { Csv, Json };

// A text that is no row of its table; says the line and, where one is to blame, the column.
class RowTextError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Rows as text and back, value for value: numbers in the shortest form that gives the same bits again, dates as the
// database files hold them ("YYYY-MM-DD HH:MM:SS"), null and empty text apart. Both sides hold one row at a time.
class RowTextWriter {
 public:
  virtual ~RowTextWriter() = default;
  virtual void head(std::string& out) = 0;
  // Throws RowTextError for a text that the format cannot hold.
  virtual void row(std::string& out, const OldRow& row) = 0;
};

class RowTextReader {
 public:
  virtual ~RowTextReader() = default;
  // False at the end. Throws RowTextError.
  virtual bool next(OldRow& row) = 0;
  [[nodiscard]] virtual std::int64_t line() const = 0;  // of the row read last, from 1
};

// The reader refers to `in`; both refer to the columns.
std::unique_ptr<RowTextWriter> makeWriter(TextFormat format, const std::vector<jet::FieldDef>& columns);
std::unique_ptr<RowTextReader> makeReader(TextFormat format, std::istream& in,
                                          const std::vector<jet::FieldDef>& columns);

// A number's shortest form with the same bits; "-0" for the negative zero.
std::string exactNumber(double value);

// CSV: RFC 4180 with line feeds; first the names of the columns. A field without any character is null, "" the empty
// text. Yes/No is 1 or 0.
std::unique_ptr<RowTextWriter> makeCsvWriter(const std::vector<jet::FieldDef>& columns);
std::unique_ptr<RowTextReader> makeCsvReader(std::istream& in, const std::vector<jet::FieldDef>& columns);

// JSON: one object a line, by column name; a missing name is null. Texts must be UTF-8.
std::unique_ptr<RowTextWriter> makeJsonWriter(const std::vector<jet::FieldDef>& columns);
std::unique_ptr<RowTextReader> makeJsonReader(std::istream& in, const std::vector<jet::FieldDef>& columns);

}  // namespace convert
