#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "folders/catalogue.h"

namespace folders {

// A table joined to the folder's own: rows whose `key` equals `field` of the folder's table.
struct JoinedTable {
  std::string name;
  std::string key;
  std::string field;
  std::vector<std::string> fields;  // added to the select list
};

// Key of a row of a call folder. -1 = no row.
struct RowKey {
  std::string owner;
  std::int64_t recordId = -1;
  bool operator==(const RowKey&) const = default;
};

// The text with every "%ADD%" replaced by "(%s + 100)/100" and setting "OrganizationTAXE" as it is; a text without
// it does not read the setting. Throws jet::Error that names the setting when it is no decimal number.
[[nodiscard]] std::string applySurcharge(std::string sql, foundation::ConfigManager& config,
                                         const foundation::LanguageFile& texts);

// A folder: a saved query over one table, and its open result.
class CDbFolder {
 public:
  // The definition and the services must outlive the folder. It starts unsorted, with the condition of this moment.
  CDbFolder(const FolderDefinition& definition, const FolderServices& services);
  CDbFolder(const CDbFolder&) = delete;
  CDbFolder& operator=(const CDbFolder&) = delete;
  // A result that is still open is reported to the operator and closed.
  ~CDbFolder();

  [[nodiscard]] int id() const { return definition_.id; }
  [[nodiscard]] const FolderDefinition& definition() const { return definition_; }
  [[nodiscard]] const std::string& caption() const { return caption_; }  // translated, up to 31 characters
  [[nodiscard]] unsigned flags() const { return flags_; }
  [[nodiscard]] const ColumnDefinition* findColumn(int kind) const;

  [[nodiscard]] const std::string& condition() const { return condition_; }
  void setCondition(std::string condition) { condition_ = std::move(condition); }
  // Takes the condition from its source again.
  void updateCondition() { condition_ = currentCondition(definition_, services_); }

  // Leaves only rows that meet `criteria` too; an empty text lifts that. A condition of the folder itself, which no
  // change of the filter touches.
  void narrow(std::string criteria) { narrowedTo_ = std::move(criteria); }

  // 0 unsorted, else the kind of the sort column, negative for descending.
  [[nodiscard]] int sortKey() const { return sortKey_; }
  void setSortKey(int sortKey) { sortKey_ = sortKey; }

  void setJoinedTables(std::vector<JoinedTable> tables) { joined_ = std::move(tables); }

  // The complete query text; also written to the debugger output.
  [[nodiscard]] std::string BuildQuery() const;
  // True when the query selects "*": no select expression holds " as ", in lower case (the test counts case).
  [[nodiscard]] bool selectsAllFields() const;
  // "ORDER BY %s %s"; empty when unsorted or when the sort key names no column that can be sorted.
  [[nodiscard]] std::string BuildOrderClause() const;

  // Opens the result of the query as it is now, in place of the one before. Throws jet::Error, filter::FilterError when
  // the call filter's values break the query.
  jet::RowWindow& open();
  void release() { result_.reset(); }
  [[nodiscard]] jet::RowWindow* result() const { return result_.get(); }

  // Position of the first row with that key in the open result; nothing when there is none, or after a database error,
  // which the operator is told.
  std::optional<std::int64_t> FindRow(const RowKey& key);
  // Key of the row at a position; position -1 gives record number -1 and reads nothing. Nothing beyond the last row or
  // after a database error. A result without field `Owner` gives an empty owner.
  std::optional<RowKey> ReadKey(std::int64_t position);

 private:
  [[nodiscard]] std::string selectList() const;
  [[nodiscard]] std::string source() const;
  [[nodiscard]] std::string whereClause() const;

  const FolderDefinition& definition_;
  const FolderServices& services_;
  std::string caption_;
  unsigned flags_;
  std::string condition_;
  std::string narrowedTo_;
  int sortKey_ = 0;
  std::vector<JoinedTable> joined_;
  std::unique_ptr<jet::RowWindow> result_;
};

}  // namespace folders
