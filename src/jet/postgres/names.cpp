#include "jet/postgres/names.h"

namespace jet::postgres {

std::string keyColumn(const TableDef& table) {
  for (const FieldDef& field : table.fields) {
    if (field.autoIncrement) return quotedName(field.name);
  }
  return quotedName(kRowKey);
}

}  // namespace jet::postgres
