#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "convert/conversion_report.h"
#include "convert/old_table.h"
#include "jet/database.h"
#include "platform/progress.h"

namespace convert {

// Writes an old file's tables into a new database: tables that this program knows with its own indexes and the old
// file's column types, all others as they are. Throws ConversionError when the operator stops it.
class TableWriter : public OldFileSink {
 public:
  TableWriter(std::string file, std::vector<jet::TableDef> knownTables, jet::Database& database,
              platform::Operator& person, ConversionReport& report);

  void beginTable(const OldTable& table) override;
  void row(const OldRow& row) override;
  void problem(const std::string& what) override;
  void endTable() override;

  // The reading of the open table ended early: what came of it stays, and the report says that the rest is lost.
  void abandonTable(const std::string& why);
  // Makes the tables of this program that the old file lacked, with the rows that must exist.
  void makeMissingTables();

 private:
  TableReport& current() { return report_.tables.back(); }
  [[nodiscard]] bool wasMade(std::string_view table) const;
  void openRows(const std::string& table);
  void write(const OldRow& row);
  void mendChangeTags();

  std::string file_;
  std::vector<jet::TableDef> known_;
  jet::Database& database_;
  platform::Operator& person_;
  ConversionReport& report_;
  std::vector<std::string> made_;  // names of the tables made so far

  bool open_ = false;
  bool skipped_ = false;  // the open table cannot be made; its rows are only counted
  std::unique_ptr<jet::Transaction> transaction_;
  std::unique_ptr<jet::Recordset> rows_;
  std::vector<std::size_t> positions_;  // of the old columns in the recordset
  std::int64_t inTransaction_ = 0;
  std::int64_t progress_ = 0;
  std::int64_t declaredRows_ = 0;  // of the open table, by its own file
  // Rows of tables whose key is no auto-number are kept until the end of the table and written in the key's order.
  std::size_t sortColumn_ = 0;
  bool sorted_ = false;
  std::vector<OldRow> waiting_;
  std::optional<platform::Progress> shown_;  // of the open table; a stop or a fault closes it with the writer
};

}  // namespace convert
