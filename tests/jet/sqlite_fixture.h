#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <memory>
#include <string>

#include "jet/database.h"

namespace jet::test {

// A database file in a folder of its own, gone after the test.
class SqliteTest : public ::testing::Test {
 protected:
  SqliteTest() {
    std::string pattern = (std::filesystem::temp_directory_path() / "tallybook-jet-XXXXXX").string();
    folder_ = mkdtemp(pattern.data());
    file_ = folder_ / "test.mdb";
    database_ = createDatabase(file_);
  }
  ~SqliteTest() override {
    database_.reset();
    std::error_code ignored;
    std::filesystem::permissions(folder_, std::filesystem::perms::owner_all, ignored);
    std::filesystem::remove_all(folder_, ignored);
  }

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

  std::filesystem::path folder_;
  std::filesystem::path file_;
  std::unique_ptr<Database> database_;
};

}  // namespace jet::test
