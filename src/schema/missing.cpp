#include "schema/missing.h"

#include <algorithm>

#include "base/printf.h"
#include "base/text.h"
#include "jet/error.h"
#include "schema/schema.h"

namespace schema {

namespace {

// The first thing missing: they are mended one after the other.
std::string missingFrom(jet::Database& database, const std::vector<jet::TableDef>& wanted) {
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

std::string missingQuietly(jet::Database& database, const std::vector<jet::TableDef>& wanted) {
  try {
    return missingFrom(database, wanted);
  } catch (const jet::Error&) {
    return {};  // the fault that led here tells more
  }
}

}  // namespace

std::string missingFromMain(jet::Database& database) {
  return missingQuietly(database, mainTables());
}

std::string missingFromTariffs(jet::Database& database) {
  return missingQuietly(database, tariffTables());
}

std::string missingFromPhonebook(jet::Database& database) {
  std::string missing = missingQuietly(database, phonebookTables());
  if (!missing.empty()) return missing;
  try {
    std::vector<jet::TableDef> subscribers;
    const jet::Snapshot map = database.openSnapshot("SELECT * FROM map");
    for (std::size_t row = 0; row < map.rowCount(); ++row) {
      subscribers.push_back(phonebookTable(map.at(row, "Table").toText()));
    }
    return missingFrom(database, subscribers);
  } catch (const jet::Error&) {
    return {};
  }
}

}  // namespace schema
