#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "base/printf.h"
#include "foundation/config_manager.h"
#include "jet/database.h"
#include "platform/clock.h"

namespace security {

enum LogLevel : int {
  LogLogin = 1,
  LogSecurity = 2,
  LogAdd = 3,
  LogEdit = 4,
  LogDelete = 5,
  LogPrint = 6,
  LogFolder = 7,
  LogTransaction = 8,
  LogError = 9,
};

// The audit log: one row of table `Log` an event.
class AuditLog {
 public:
  // `userName` gives the name to stamp: that of the user logged in, empty when no one is.
  AuditLog(foundation::ConfigManager& config, const platform::Clock& clock, std::function<std::string()> userName);

  void OpenLog(jet::Database& database);
  void CloseLog();
  void LoadLogLevels();

  // Adds an entry whose text is the format filled with its arguments; texts stay below 256 characters (longer ones are
  // cut). False, and nothing written, while the database is read-only. Throws jet::Error for database faults.
  template <typename... Arguments>
  bool WriteLog(int level, std::string_view format, const Arguments&... arguments) {
    return writeEntry(level, base::format(format, arguments...));
  }

  // The condition of the log folder, from the filter keys of the machine store.
  [[nodiscard]] std::string BuildLogFilter();
  // Deletes entries older than the retention; false when retention is off.
  bool PurgeOldLogEntries();
  // The operator's command: empties the log.
  void ClearLog();

 private:
  bool writeEntry(int level, std::string text);

  foundation::ConfigManager& config_;
  const platform::Clock& clock_;
  std::function<std::string()> userName_;
  jet::Database* database_ = nullptr;
  std::unique_ptr<jet::Recordset> LogRecordset_;
  // Read from `Log_Login` .. `Log_Err` and kept, but never consulted: the writer records every entry.
  std::array<std::int32_t, 9> LogLevelEnabled_{};
};

}  // namespace security
