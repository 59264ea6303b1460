#include "security/audit_log.h"

#include <algorithm>

#include "base/characters.h"
#include "base/text.h"
#include "jet/error.h"

namespace security {

namespace {

// A text of an entry, as many characters as the documented buffer of 256 holds.
constexpr std::size_t kMaxText = 255;

// Retentions beyond this many days (a thousand years) keep everything anyway, and their cutoff may be no date.
constexpr std::int32_t kLongestRetention = 365000;

namespace keys = foundation::keys;

struct Category {
  LogLevel level;
  const foundation::NumberKey& showKey;
  const foundation::NumberKey& recordKey;
};
constexpr Category kCategories[] = {
    {LogLogin, keys::LogFilt_Login, keys::Log_Login},    {LogSecurity, keys::LogFilt_Security, keys::Log_Security},
    {LogAdd, keys::LogFilt_Add, keys::Log_Add},          {LogEdit, keys::LogFilt_Edit, keys::Log_Edit},
    {LogDelete, keys::LogFilt_Del, keys::Log_Del},       {LogPrint, keys::LogFilt_Print, keys::Log_Print},
    {LogFolder, keys::LogFilt_Folder, keys::Log_Folder}, {LogTransaction, keys::LogFilt_Tranz, keys::Log_Tranz},
    {LogError, keys::LogFilt_Err, keys::Log_Err},
};

// A date of the filter, "%m/%d/%Y" as text and by its parts.
struct FilterDate {
  std::string text;
  std::int32_t day = 0;
  std::int32_t month = 0;
  std::int32_t year = 0;
};

FilterDate splitDate(std::string text) {
  FilterDate date;
  const auto parts = base::split(text, "/", true);
  if (!parts.empty()) date.month = base::leadingInteger(parts[0]);
  if (parts.size() > 1) date.day = base::leadingInteger(parts[1]);
  if (parts.size() > 2) date.year = base::leadingInteger(parts[2]);
  date.text = std::move(text);
  return date;
}

std::string levelCondition(foundation::ConfigManager& config) {
  std::string condition;
  for (const Category& category : kCategories) {
    if (config.ReadConfigInt(category.showKey) == 0) continue;
    if (!condition.empty()) condition += " OR ";
    condition += base::format(" Level = %d ", static_cast<int>(category.level));
  }
  return condition.empty() ? condition : "(" + condition + ")";
}

// Both end days are included whole, whatever the time of day.
std::string intervalCondition(const FilterDate& start, const FilterDate& end) {
  return base::format(
      " ((DateTime > #%s# OR (DAY(DateTime)=%d AND MONTH(DateTime)=%d AND YEAR(DateTime)=%d)) AND (DateTime < #%s# OR "
      "(DAY(DateTime)=%d AND MONTH(DateTime)=%d AND YEAR(DateTime)=%d)))",
      start.text, start.day, start.month, start.year, end.text, end.day, end.month, end.year);
}

}  // namespace

AuditLog::AuditLog(foundation::ConfigManager& config, const platform::Clock& clock,
                   std::function<std::string()> userName)
    : config_(config), clock_(clock), userName_(std::move(userName)) {}

void AuditLog::OpenLog(jet::Database& database) {
  const jet::AsStored stored(database);
  LogRecordset_ = database.openRecordset("SELECT * FROM Log ORDER BY DateTime DESC;");
  database_ = &database;
}

void AuditLog::CloseLog() {
  LogRecordset_.reset();
  database_ = nullptr;
}

void AuditLog::LoadLogLevels() {
  for (const Category& category : kCategories) {
    LogLevelEnabled_[static_cast<std::size_t>(category.level) - 1] = config_.ReadConfigInt(category.recordKey);
  }
}

bool AuditLog::writeEntry(int level, std::string text) {
  if (database_ == nullptr || database_->readOnly()) return false;
  LogRecordset_->addNew();
  LogRecordset_->set("Desc", base::firstCharacters(text, kMaxText));
  LogRecordset_->set("UserName", userName_());
  LogRecordset_->set("DateTime", clock_.now());
  LogRecordset_->set("Level", level);
  LogRecordset_->update();
  return true;
}

std::string AuditLog::BuildLogFilter() {
  // A date that was never chosen is today's: an empty one would make a condition that is none.
  const auto date = [this](const foundation::TextKey& key) {
    const std::string today = clock_.now().format("%m/%d/%Y");
    return splitDate(config_.ReadConfigString(key, today));
  };

  if (config_.ReadConfigInt(keys::LogFilt_Enabled) == 0) return "1=1";
  std::string condition = levelCondition(config_);
  if (config_.ReadConfigInt(keys::LogFilt_UserEnabled) != 0) {
    if (!condition.empty()) condition += " AND ";
    condition += base::format(" UserName = \"%s\" ", config_.ReadConfigString(keys::LogFilt_User));
  }
  if (config_.ReadConfigInt(keys::LogFilt_IntervalEnabled) != 0) {
    if (!condition.empty()) condition += " AND ";
    condition += intervalCondition(date(keys::LogFilt_IntervalStart), date(keys::LogFilt_IntervalEnd));
  }
  return condition.empty() ? "1=1" : condition;
}

bool AuditLog::PurgeOldLogEntries() {
  if (database_ == nullptr || database_->readOnly()) return true;
  const std::int32_t days = std::min(config_.ReadConfigInt(keys::Log_DeleteAfter), kLongestRetention);
  if (days <= 0 || config_.ReadConfigInt(keys::Log_DeleteEnabled) == 0) return false;
  const base::DateTime cutoff = clock_.now().midnight().plusDays(-(days - std::int64_t{1}));
  try {
    // One statement, not row by row: a log may hold a million entries when its retention is first switched on.
    database_->execute("DELETE FROM Log WHERE " + base::format("DateTime<=#%s#", cutoff.format("%m/%d/%Y")));
  } catch (const jet::Error&) {
    // By rule the purge ends quietly; the next start tries again.
  }
  return true;
}

void AuditLog::ClearLog() {
  if (database_ != nullptr) database_->execute("DELETE FROM Log");
}

}  // namespace security
