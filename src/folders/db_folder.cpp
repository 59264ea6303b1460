#include "folders/db_folder.h"

#include <algorithm>
#include <cstdlib>

#include "base/debug_output.h"
#include "base/printf.h"
#include "base/text.h"
#include "foundation/settings_catalogue.h"

namespace folders {

std::string applySurcharge(std::string sql, foundation::ConfigManager& config, const foundation::LanguageFile& texts) {
  constexpr std::string_view kPlaceholder = "%ADD%";
  if (sql.find(kPlaceholder) == std::string::npos) return sql;
  const std::string rate = config.ReadConfigString(foundation::keys::OrganizationTAXE);
  if (!foundation::isDecimal(rate)) throw jet::Error(3075, texts.TranslateFormat("IDS_SURCHARGE_UNUSABLE", rate), rate);
  return base::replaceAll(std::move(sql), kPlaceholder, base::format("(%s + 100)/100", rate));
}

CDbFolder::CDbFolder(const FolderDefinition& definition, const FolderServices& services)
    : definition_(definition),
      services_(services),
      caption_(folderCaption(definition, services.texts)),
      flags_(definition.flags) {
  if ((flags_ & FolderConditional) != 0) updateCondition();
}

CDbFolder::~CDbFolder() {
  if (result_) services_.person.messageBox("Non-fatal: folder not released on shutdown.");
}

const ColumnDefinition* CDbFolder::findColumn(int kind) const {
  const auto found = std::ranges::find(definition_.columns, kind, &ColumnDefinition::kind);
  return found == definition_.columns.end() ? nullptr : &*found;
}

bool CDbFolder::selectsAllFields() const {
  return std::ranges::none_of(definition_.columns, [](const ColumnDefinition& column) {
    return std::ranges::any_of(column.selects, [](const char* select) {
      return select != nullptr && std::string_view(select).find(" as ") != std::string_view::npos;
    });
  });
}

std::string CDbFolder::selectList() const {
  if (selectsAllFields()) return "*";
  std::string list;
  for (const ColumnDefinition& column : definition_.columns) {
    for (const char* select : column.selects) {
      if (select != nullptr) list.append(list.empty() ? "" : ", ").append(select);
    }
  }
  return list;
}

// Nested right joins, the folder's table innermost.
std::string CDbFolder::source() const {
  std::string list = base::format("[%s].*", definition_.table);
  std::string tables;
  for (const JoinedTable& joined : joined_) {
    for (const std::string& field : joined.fields) list += ", " + joined.name + "." + field;
    tables += "(" + joined.name + " RIGHT JOIN ";
  }
  tables += base::format("[%s] ", definition_.table);
  for (auto joined = joined_.rbegin(); joined != joined_.rend(); ++joined) {
    tables += base::format(" ON %s.%s = [%s].[%s]) ", joined->name, joined->key, definition_.table, joined->field);
  }
  return "SELECT " + list + " FROM " + tables;
}

std::string CDbFolder::BuildOrderClause() const {
  if (sortKey_ == 0) return {};
  const ColumnDefinition* column = findColumn(std::abs(sortKey_));
  if (column == nullptr || column->sort == nullptr) return {};
  return base::format("ORDER BY %s %s", column->sort, sortKey_ > 0 ? "ASC" : "DESC");
}

// The condition is last: a user's restriction at its end stays the last part of the whole.
std::string CDbFolder::whereClause() const {
  const bool conditional = (flags_ & FolderConditional) != 0;
  if (narrowedTo_.empty()) return conditional ? " WHERE " + condition_ : std::string();
  return " WHERE (" + narrowedTo_ + ")" + (conditional ? " AND " + condition_ : std::string());
}

std::string CDbFolder::BuildQuery() const {
  std::string query =
      joined_.empty() ? base::format("SELECT %s FROM [%s] as toptab", selectList(), definition_.table) : source();
  query += whereClause();
  if (isStatistic(definition_)) query += base::format(" group by %s ", definition_.grouping);
  const std::string order = BuildOrderClause();
  if (!order.empty()) query += " " + order;
  query = applySurcharge(std::move(query), services_.config, services_.texts);
  base::debugOutput(query);
  return query;
}

jet::RowWindow& CDbFolder::open() {
  result_.reset();
  if (definition_.condition == ConditionSource::CallFilter) filter::requireReadable(condition_, services_.texts);
  result_ = services_.main.openWindow(BuildQuery());
  return *result_;
}

std::optional<std::int64_t> CDbFolder::FindRow(const RowKey& key) {
  if (!result_) return std::nullopt;
  try {
    return result_->find(key.owner.empty() ? base::format("RecordID = %d", key.recordId)
                                           : base::format("Owner = \"%s\" AND RecordID = %d", key.owner, key.recordId));
  } catch (const jet::Error& error) {
    services_.person.messageBox(error.description());
    return std::nullopt;
  }
}

std::optional<RowKey> CDbFolder::ReadKey(std::int64_t position) {
  if (position == -1) return RowKey{};
  if (!result_) return std::nullopt;
  try {
    const jet::Snapshot row = result_->rows(position, 1);
    if (row.empty()) return std::nullopt;
    const auto& columns = row.columns();
    const bool hasOwner =
        std::ranges::any_of(columns, [](const std::string& name) { return base::equalFoldAscii(name, "Owner"); });
    return RowKey{hasOwner ? row.at(0, "Owner").toText() : std::string(), row.at(0, "RecordID").toLong(-1)};
  } catch (const jet::Error& error) {
    services_.person.messageBox(error.description());
    return std::nullopt;
  }
}

}  // namespace folders
