#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "convert/old_table.h"
#include "jet/database.h"
#include "schema/schema.h"

namespace convert {

// Everything that makes a table in a file, as one text: equal texts, equal tables.
inline std::string described(const jet::TableDef& table) {
  std::ostringstream text;
  for (const jet::FieldDef& field : table.fields) {
    text << field.name << ' ' << static_cast<int>(field.type) << ' ' << field.size << ' ' << field.autoIncrement << ' '
         << field.generatedFrom << '\n';
  }
  for (const jet::IndexDef& index : table.indexes) {
    if (index.forOrder) continue;
    for (const std::string& field : index.fields) text << field << ' ';
    text << index.unique << '\n';
  }
  return text.str();
}

inline std::vector<OldRow> rowsOf(jet::Database& database, const std::string& table) {
  std::vector<OldRow> rows;
  database.forEachRow("SELECT * FROM [" + table + "]", [&](const OldRow& row) {
    rows.push_back(row);
    return true;
  });
  return rows;
}

inline void expectSameDatabase(const std::filesystem::path& left, const std::filesystem::path& right) {
  const auto a = jet::openDatabase(left, jet::OpenMode::ReadOnly);
  const auto b = jet::openDatabase(right, jet::OpenMode::ReadOnly);
  ASSERT_EQ(a->tableNames(), b->tableNames());
  for (const std::string& table : a->tableNames()) {
    EXPECT_EQ(described(a->tableDef(table)), described(b->tableDef(table))) << table;
    EXPECT_TRUE(rowsOf(*a, table) == rowsOf(*b, table)) << table;
  }
}

// A main database with a table that the program does not know, with a name and values that are hard to write down.
inline void makeOddDatabase(const std::filesystem::path& folder) {
  std::filesystem::create_directories(folder);
  const auto database = schema::createMainDatabase(folder / schema::kMainFile);
  database->createTable({.name = "Vânzări 2003/\"b\"",
                         .fields = {{.name = "a,b", .type = jet::Type::Text, .size = 0},
                                    {.name = "Suma", .type = jet::Type::Double},
                                    {.name = "Când", .type = jet::Type::DateTime},
                                    {.name = "Da", .type = jet::Type::Boolean},
                                    {.name = "Număr", .type = jet::Type::Long}}});
  const auto rows = database->openRecordset("SELECT * FROM [Vânzări 2003/\"b\"]");
  const jet::Value texts[] = {
      "",  {},   " ",  "\"",       "a\r\nb\n\nc", ",",    "null", "=1+1", "\\n\\", "ș", "\xF0\x9F\x98\x80",
      "'", "\t", "\r", "1,5\"x\"", "0",           "Ω\x01"};
  const jet::Value numbers[] = {
      0.1,     -0.0, {},          1e300, 5e-324, std::numeric_limits<double>::max(), std::nextafter(4.97, 5.0),
      1.0 / 3, 1e15, -123456789.0};
  const jet::Value dates[] = {{},
                              *base::DateTime::fromStored("1899-12-30 08:00:00"),
                              *base::DateTime::fromStored("0100-01-01 00:00:00"),
                              *base::DateTime::fromStored("9999-12-31 23:59:59")};
  for (std::size_t i = 0; i < std::size(texts); ++i) {
    rows->addNew();
    rows->set(0U, texts[i]);
    rows->set(1U, numbers[i % std::size(numbers)]);
    rows->set(2U, dates[i % std::size(dates)]);
    rows->set(3U, i % 2 == 0);
    rows->set(4U, i % 3 == 0 ? jet::Value() : jet::Value(i % 2 == 0 ? 2147483647 : -2147483647 - 1));
    rows->update();
  }
}

}  // namespace convert
