#include "schema/missing.h"

#include <algorithm>

#include "base/printf.h"
#include "base/text.h"
#include "jet/error.h"
#include "schema/schema.h"

namespace schema {

namespace {

// The first thing missing: they are mended one after the other.
std::string firstMissing(jet::Database& database, const std::vector<jet::TableDef>& wanted) {
  const std::string file = database.path().string();
  const std::vector<std::string> names = database.tableNames();
  for (const jet::TableDef& table : wanted) {
    const bool there = std::any_of(names.begin(), names.end(),
                                   [&](const std::string& name) { return base::equalFoldAscii(name, table.name); });
    if (!there) return base::format("%s lacks the table %s. Restore it from a copy.", file, table.name);
    const jet::TableDef present = database.tableDef(table.name);
    for (const jet::FieldDef& field : table.fields) {
      if (present.find(field.name) != nullptr) continue;
      return base::format("%s: the table %s lacks the column %s. Restore it from a copy.", file, table.name,
                          field.name);
    }
  }
  return {};
}

std::vector<jet::TableDef> subscriberTables(jet::Database& phonebook) {
  std::vector<jet::TableDef> tables;
  const jet::Snapshot map = phonebook.openSnapshot("SELECT * FROM map");
  for (std::size_t row = 0; row < map.rowCount(); ++row) {
    tables.push_back(phonebookTable(map.at(row, "Table").toText()));
  }
  return tables;
}

}  // namespace

std::string missingFrom(Which which, jet::Database& database) {
  try {
    std::string missing = firstMissing(database, kindOf(which).tables());
    if (!missing.empty() || which != Which::Phonebook) return missing;
    return firstMissing(database, subscriberTables(database));
  } catch (const jet::Error&) {
    return {};  // the fault that led here tells more
  }
}

}  // namespace schema
