#pragma once

#include <sqlite3.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "processor_time.h"

namespace bench {

// The yardstick: rows of a finished table written again by nothing but a prepared INSERT, into an empty file with the
// same table, indexes, pragmas and batches. Only the writing is timed.

struct BareInsert {
  std::int64_t rows = 0;
  double seconds = 0;
  double processorSeconds = 0;
};

namespace detail {

struct Close {
  void operator()(sqlite3* database) const { sqlite3_close(database); }
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
  void operator()(sqlite3_value* value) const { sqlite3_value_free(value); }
};
using Database = std::unique_ptr<sqlite3, Close>;
using Statement = std::unique_ptr<sqlite3_stmt, Close>;
using Value = std::unique_ptr<sqlite3_value, Close>;

inline void check(sqlite3* database, int status) {
  if (status != SQLITE_OK && status != SQLITE_DONE && status != SQLITE_ROW) {
    throw std::runtime_error(sqlite3_errmsg(database));
  }
}

inline Database open(const std::filesystem::path& file, int pageSize = 0) {
  sqlite3* database = nullptr;
  const int status = sqlite3_open(file.c_str(), &database);
  Database owner(database);
  check(database, status);
  if (pageSize > 0) {
    check(database,
          sqlite3_exec(database, ("PRAGMA page_size=" + std::to_string(pageSize)).c_str(), nullptr, nullptr, nullptr));
  }
  // As the driver sets them.
  for (const char* pragma : {"PRAGMA journal_mode=WAL", "PRAGMA synchronous=NORMAL", "PRAGMA cache_size=-12288"}) {
    check(database, sqlite3_exec(database, pragma, nullptr, nullptr, nullptr));
  }
  return owner;
}

inline Statement prepare(sqlite3* database, const std::string& sql) {
  sqlite3_stmt* statement = nullptr;
  check(database, sqlite3_prepare_v2(database, sql.c_str(), -1, &statement, nullptr));
  return Statement(statement);
}

inline std::vector<std::string> texts(sqlite3* database, const std::string& sql) {
  std::vector<std::string> result;
  const Statement statement = prepare(database, sql);
  while (sqlite3_step(statement.get()) == SQLITE_ROW) {
    result.emplace_back(reinterpret_cast<const char*>(sqlite3_column_text(statement.get(), 0)));
  }
  return result;
}

inline void copySchema(sqlite3* from, sqlite3* to, const std::string& table) {
  for (const std::string& sql : texts(
           from, "SELECT sql FROM sqlite_master WHERE sql IS NOT NULL AND tbl_name = '" + table + "' ORDER BY rowid")) {
    check(to, sqlite3_exec(to, sql.c_str(), nullptr, nullptr, nullptr));
  }
}

// One batch of rows, begin and commit included.
inline void writeBatch(sqlite3* to, sqlite3_stmt* insert, const std::vector<Value>& cells, std::size_t columns) {
  check(to, sqlite3_exec(to, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr));
  for (std::size_t cell = 0; cell < cells.size(); cell += columns) {
    for (std::size_t i = 0; i < columns; ++i) {
      check(to, sqlite3_bind_value(insert, static_cast<int>(i) + 1, cells[cell + i].get()));
    }
    check(to, sqlite3_step(insert));
    check(to, sqlite3_reset(insert));
  }
  check(to, sqlite3_exec(to, "COMMIT", nullptr, nullptr, nullptr));
}

}  // namespace detail

inline BareInsert insertBare(const std::filesystem::path& source, const std::filesystem::path& target,
                             const std::string& table, std::int64_t rowsPerBatch) {
  using namespace detail;
  const Database from = open(source);
  const Database to = open(target, std::stoi(texts(from.get(), "PRAGMA page_size").front()));
  copySchema(from.get(), to.get(), table);
  std::string columns;
  std::string places;
  // Without the generated columns, which cannot be written.
  const std::vector<std::string> names = texts(from.get(), "SELECT name FROM pragma_table_info('" + table + "')");
  for (const std::string& name : names) {
    columns += (columns.empty() ? "\"" : ", \"") + name + "\"";
    places += places.empty() ? "?" : ", ?";
  }
  const Statement select = prepare(from.get(), "SELECT " + columns + " FROM \"" + table + "\" ORDER BY rowid");
  const Statement insert = prepare(to.get(), "INSERT INTO \"" + table + "\" (" + columns + ") VALUES (" + places + ")");
  BareInsert result;
  bool more = true;
  while (more) {
    std::vector<Value> cells;
    std::int64_t rows = 0;
    while (rows < rowsPerBatch && (more = sqlite3_step(select.get()) == SQLITE_ROW)) {
      for (std::size_t i = 0; i < names.size(); ++i) {
        cells.emplace_back(sqlite3_value_dup(sqlite3_column_value(select.get(), static_cast<int>(i))));
      }
      ++rows;
    }
    const auto start = std::chrono::steady_clock::now();
    const double startOfProcessor = processorTime();
    writeBatch(to.get(), insert.get(), cells, names.size());
    result.seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    result.processorSeconds += (processorTime() - startOfProcessor) / 1000;
    result.rows += rows;
  }
  return result;
}

}  // namespace bench
