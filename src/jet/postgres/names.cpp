#include "jet/postgres/names.h"

namespace jet::postgres {

std::string keyColumn(const TableDef& table) {
  for (const FieldDef& field : table.fields) {
    if (field.autoIncrement) return quotedName(field.name);
  }
  return quotedName(kRowKey);
}

std::string quotedText(std::string_view text) {
  std::string result = "'";
  for (const char c : text) {
    if (c == '\'') result += '\'';
    result += c;
  }
  return result + "'";
}

}  // namespace jet::postgres
