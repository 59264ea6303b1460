#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>

#include "jet/database.h"
#include "support/test_place.h"

namespace jet::test {

// A database of a test's own: a file, or on the server that the environment names (support::TestPlace).
class DatabaseFixture : public ::testing::Test {
 protected:
  using Where = support::TestPlace::Where;
  explicit DatabaseFixture(Where where = Where::AsTheEnvironmentSays)
      : place_(where), file_(place_.database("test.mdb")), database_(createDatabase(file_)) {}

  // From here on the connection knows of what others committed before.
  void seeOthers() { const ReadView now(*database_); }

  // The rows as "a|b;c|d".
  std::string rows(std::string_view sql) { return rows(*database_, sql); }
  static std::string rows(Database& database, std::string_view sql) {
    std::string text;
    database.forEachRow(sql, [&text](const std::vector<Value>& row) {
      if (!text.empty()) text += ';';
      for (std::size_t i = 0; i < row.size(); ++i) text += (i == 0 ? "" : "|") + row[i].toText();
      return true;
    });
    return text;
  }

  template <typename Call>
  static int errorOf(Call call) {
    try {
      call();
    } catch (const Error& error) {
      return error.number();
    }
    return 0;
  }

  support::TestPlace place_;
  std::filesystem::path file_;
  std::unique_ptr<Database> database_;
};

}  // namespace jet::test
