#include "convert/table_move.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <bit>
#include <cmath>
#include <limits>
#include <sstream>

#include "convert/conversion_error.h"
#include "convert/converter.h"
#include "jet/database.h"
#include "odd_database.h"
#include "old_files.h"
#include "schema/schema.h"
#include "support/temporary_folder.h"

namespace convert {

using namespace support;

namespace {

namespace fs = std::filesystem;

const TextFormat kFormats[] = {TextFormat::Csv, TextFormat::Json};

void expectSameFolder(const fs::path& left, const fs::path& right) {
  for (const char* name : {schema::kMainFile, schema::kTariffFile, schema::kPhonebookFile}) {
    expectSameDatabase(left / name, right / name);
  }
}

TEST(TableMove, ConvertedDatabasesComeBackEqual) {
  for (const char* main : {"text-extension", "long-extension"}) {
    for (const TextFormat format : kFormats) {
      const TemporaryFolder scratch;
      platform::NoOperator nobody;
      makeOldFolder(scratch / "old", main);
      convertFolder(scratch / "old", scratch / "new", {}, nobody);
      exportTables(schema::DatabasePlace::ofFolder(scratch / "new"), scratch / "tables", format, nobody);
      importTables(scratch / "tables", scratch / "again", nobody);
      expectSameFolder(scratch / "new", scratch / "again");
      for (const auto& entry : fs::directory_iterator(scratch / "tables")) {
        struct stat file {};
        ASSERT_EQ(stat(entry.path().c_str(), &file), 0);
        EXPECT_EQ(file.st_mode & 0777, 0600U) << entry.path() << " holds password digests";
      }
    }
  }
}

TEST(TableMove, KeepsNullEmptyTextAndTheBitsOfNumbers) {
  for (const TextFormat format : kFormats) {
    const TemporaryFolder scratch;
    platform::NoOperator nobody;
    makeOddDatabase(scratch / "data");
    exportTables(schema::DatabasePlace::ofFolder(scratch / "data"), scratch / "tables", format, nobody);
    importTables(scratch / "tables", scratch / "again", nobody);
    expectSameDatabase(scratch / "data" / schema::kMainFile, scratch / "again" / schema::kMainFile);
    const auto again = jet::openDatabase(scratch / "again" / schema::kMainFile, jet::OpenMode::ReadOnly);
    const auto rows = rowsOf(*again, "Vânzări 2003/\"b\"");
    EXPECT_EQ(rows[0][0], jet::Value(""));
    EXPECT_TRUE(rows[1][0].isNull());
    // The databases that were not exported are there, so that the folder can be worked with.
    EXPECT_TRUE(fs::exists(scratch / "again" / schema::kTariffFile));
    EXPECT_TRUE(fs::exists(scratch / "again" / schema::kPhonebookFile));
  }
}

TEST(TableMove, DoublesKeepEveryBit) {
  const std::vector<jet::FieldDef> columns = {{.name = "x", .type = jet::Type::Double}};
  for (const TextFormat format : kFormats) {
    for (const double value : {0.0, -0.0, 0.1, 1.0 / 3, 4.97, 5e-324, -1e300, 1e22, 123456789012345680.0}) {
      std::string text;
      const auto writer = makeWriter(format, columns);
      writer->head(text);
      writer->row(text, {value});
      std::istringstream in(text);
      OldRow row;
      ASSERT_TRUE(makeReader(format, in, columns)->next(row)) << text;
      EXPECT_EQ(std::bit_cast<std::uint64_t>(row[0].number()), std::bit_cast<std::uint64_t>(value)) << text;
    }
  }
}

constexpr const char* kOneTable = R"({"format":"csv","tables":[{"database":"tariffs.mdb","table":"providers",
  "data":"p.csv","rows":2,"columns":[{"name":"provider_id","type":"long"},{"name":"provider_name","type":"text",
  "size":10}]}]})";

std::string importFault(const std::string& manifest, const std::string& rows) {
  const TemporaryFolder scratch;
  fs::create_directories(scratch / "tables");
  writeFile(scratch / "tables" / kManifestFile, manifest);
  writeFile(scratch / "tables" / "p.csv", rows);
  platform::NoOperator nobody;
  try {
    importTables(scratch / "tables", scratch / "new", nobody);
  } catch (const ConversionError& fault) {
    EXPECT_FALSE(fs::exists(scratch / "new"));
    EXPECT_FALSE(fs::exists(scratch / "new.partial"));
    return fault.what();
  }
  return "";
}

TEST(TableMove, AcceptsWhatSpreadsheetsWrite) {
  EXPECT_EQ(importFault(kOneTable, "provider_id,provider_name\n1,Alfa\n2,\n"), "");
  EXPECT_EQ(importFault(kOneTable, "\xEF\xBB\xBFprovider_id,provider_name\r\n\"1\",\"Al\"\"fa\"\r\n2,Beta"), "");
  EXPECT_EQ(importFault(kOneTable, "provider_id,provider_name\n1,a\n2,b\n\n\n"), "");
}

TEST(TableMove, NamesTheFileAndTheLineOfAFault) {
  struct Case {
    std::string manifest;
    const char* rows;
    const char* said;
  };
  const std::string table = kOneTable;
  const auto with = [&](const char* from, const char* to) {
    return std::string(table).replace(table.find(from), std::string_view(from).size(), to);
  };
  const char* const head = "provider_id,provider_name\n1,a\n2,b\n";
  for (const Case& c : {
           Case{table, "", "line 1"},
           Case{table, "provider_name,provider_id\na,1\nb,2\n", "column 1 is not provider_id"},
           Case{table, "provider_id,provider_name\n1,a\nx,b\n", "line 3: column provider_id: \"x\""},
           Case{table, "provider_id,provider_name\n1,a\n2\n", "line 3: 1 values instead of 2"},
           Case{table, "provider_id,provider_name\n1,\"a\nb\"\n2,\"b\n", "line 4: a quoted text does not end"},
           Case{table, "provider_id,provider_name\n1,a\n2,this is too long\n", "p.csv, line 3"},
           Case{table, "provider_id,provider_name\n1,a\n", "1 rows where schema.json says 2"},
           Case{with("p.csv", "../p.csv"), head, "no file of its folder"},
           Case{with("p.csv", "q.csv"), head, "q.csv"},
           Case{with("tariffs.mdb", "/etc/x"), head, "none of the three databases"},
           Case{with("long", "money"), head, "\"money\" is no type"},
           Case{"{\"format\":\"xml\"}", head, "\"xml\""},
           Case{"{", head, "cannot be understood"},
           Case{"[1]", head, "cannot be understood"},
       }) {
    EXPECT_NE(importFault(c.manifest, c.rows).find(c.said), std::string::npos)
        << c.said << " | " << importFault(c.manifest, c.rows);
  }
}

TEST(TableMove, RefusesJsonLinesThatAreNoRows) {
  const std::vector<jet::FieldDef> columns = {{.name = "n", .type = jet::Type::Long},
                                              {.name = "t", .type = jet::Type::Text}};
  for (const char* line : {"[]", "{", "{\"n\":1.5}", "{\"n\":\"1\"}", "{\"t\":1}", "{\"x\":1}", "{\"n\":true}"}) {
    std::istringstream in(line);
    OldRow row;
    EXPECT_THROW(makeReader(TextFormat::Json, in, columns)->next(row), RowTextError) << line;
  }
}

}  // namespace
}  // namespace convert
