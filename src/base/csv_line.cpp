#include "base/csv_line.h"

#include "base/text.h"

namespace base {

std::vector<std::string> csvFields(std::string_view line, char separator) {
  std::vector<std::string> fields(1);
  bool quoted = false;
  for (std::size_t i = 0; i < line.size(); ++i) {
    const char c = line[i];
    if (c == '"' && quoted && i + 1 < line.size() && line[i + 1] == '"') {
      fields.back() += line[++i];
    } else if (c == '"') {
      quoted = !quoted;
    } else if (c == separator && !quoted) {
      fields.emplace_back();
    } else {
      fields.back() += c;
    }
  }
  for (std::string& field : fields) field = trim(field);
  return fields;
}

std::string csvQuoted(std::string text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  return "\"" + replaceAll(std::move(text), "\"", "\"\"") + "\"";
}

}  // namespace base
