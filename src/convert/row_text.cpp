#include "convert/row_text.h"

#include <charconv>

namespace convert {

std::unique_ptr<RowTextWriter> makeWriter(TextFormat format, const std::vector<jet::FieldDef>& columns) {
  return format == TextFormat::Csv ? makeCsvWriter(columns) : makeJsonWriter(columns);
}

std::unique_ptr<RowTextReader> makeReader(TextFormat format, std::istream& in,
                                          const std::vector<jet::FieldDef>& columns) {
  return format == TextFormat::Csv ? makeCsvReader(in, columns) : makeJsonReader(in, columns);
}

std::string exactNumber(double value) {
  char text[32];
  const auto result = std::to_chars(text, text + sizeof text, value);
  return {text, result.ptr};
}

}  // namespace convert
