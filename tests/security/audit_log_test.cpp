#include "security/audit_log.h"

#include "security/login_fixture.h"

namespace security {
namespace {

using Texts = std::vector<std::string>;

class Log : public SecurityFixture {
 protected:
  void set(const char* key, std::int32_t value, int store = foundation::StoreMachine) {
    config_.WriteConfigInt(value, key, "general", store);
  }
  void addEntry(const char* when) {
    const auto now = clock_.time;
    clock_.time = *base::DateTime::fromStored(when);
    log_.WriteLog(LogError, "%s", when);
    clock_.time = now;
  }
  std::int64_t count(const std::string& condition) {
    return database_->openSnapshot("select count(*) from Log where " + condition).at(0, 0).toLong();
  }
};

TEST_F(Log, StampsTimeLevelAndTheUserLoggedIn) {
  EXPECT_TRUE(log_.WriteLog(LogError, "can't open %s", "x.txt"));
  session_.CurrentUserName = "ana";
  EXPECT_TRUE(log_.WriteLog(LogAdd, "100%% of %d", 5));
  session_.UserLoggedIn = true;
  EXPECT_TRUE(log_.WriteLog(LogEdit, "edited"));
  EXPECT_EQ(entries(), (Texts{"9 : can't open x.txt", "3 : 100% of 5", "4 ana: edited"}));
  EXPECT_EQ(database_->openSnapshot("select DateTime from Log").at(0, 0).toDateTime(), clock_.time);
}

TEST_F(Log, CutsLongTextsBetweenCharacters) {
  std::string letters;
  for (int i = 0; i < 300; ++i) letters += "ș";
  log_.WriteLog(LogError, "%s", letters);
  EXPECT_EQ(entries().front(), "9 : " + letters.substr(0, 255 * 2));
}

TEST_F(Log, RecordsEveryLevelWhateverItsRecordKeySays) {
  set("Log_Err", 0);
  set("Log_Login", 0);
  log_.LoadLogLevels();
  EXPECT_TRUE(log_.WriteLog(LogError, "e"));
  EXPECT_TRUE(log_.WriteLog(LogLogin, "l"));
  EXPECT_EQ(entries().size(), 2U);
}

TEST_F(Log, WritesAndPurgesNothingInAReadOnlyDatabase) {
  addEntry("2020-01-01 00:00:00");
  set("Log_DeleteAfter", 1, foundation::StoreDatabase);
  set("Log_DeleteEnabled", 1, foundation::StoreDatabase);
  open(jet::OpenMode::ReadOnly);
  EXPECT_FALSE(log_.WriteLog(LogError, "e"));
  EXPECT_TRUE(log_.PurgeOldLogEntries());
  EXPECT_EQ(entries().size(), 1U);
}

TEST_F(Log, FilterIsBuiltFromItsKeys) {
  const std::string interval =
      " ((DateTime > #01/31/2025# OR (DAY(DateTime)=31 AND MONTH(DateTime)=1 AND YEAR(DateTime)=2025)) AND "
      "(DateTime < #02/01/2025# OR (DAY(DateTime)=1 AND MONTH(DateTime)=2 AND YEAR(DateTime)=2025)))";
  struct {
    std::vector<const char*> on;
    std::string condition;
  } const cases[] = {
      {{"LogFilt_Security", "LogFilt_UserEnabled"}, "1=1"},
      {{"LogFilt_Enabled"}, "1=1"},
      {{"LogFilt_Enabled", "LogFilt_Login"}, "( Level = 1 )"},
      {{"LogFilt_Enabled", "LogFilt_Security", "LogFilt_Err", "LogFilt_UserEnabled"},
       "( Level = 2  OR  Level = 9 ) AND  UserName = \"adm\" "},
      {{"LogFilt_Enabled", "LogFilt_UserEnabled"}, " UserName = \"adm\" "},
      {{"LogFilt_Enabled", "LogFilt_IntervalEnabled"}, interval},
      {{"LogFilt_Enabled", "LogFilt_Tranz", "LogFilt_IntervalEnabled"}, "( Level = 8 ) AND " + interval},
      {{"LogFilt_Enabled", "LogFilt_UserEnabled", "LogFilt_IntervalEnabled"}, " UserName = \"adm\"  AND " + interval},
  };
  for (const auto& each : cases) {
    config_.WriteConfigString(std::nullopt, "", "general", foundation::StoreMachine);
    setMachine("LogFilt_User", "adm");
    setMachine("LogFilt_IntervalStart", "01/31/2025");
    setMachine("LogFilt_IntervalEnd", "02/01/2025");
    for (const char* key : each.on) set(key, 1);
    EXPECT_EQ(log_.BuildLogFilter(), each.condition);
    EXPECT_NO_THROW(count(each.condition));
  }
}

TEST_F(Log, IntervalTakesBothEndDaysWhole) {
  for (const char* when : {"2025-01-30 23:59:59", "2025-01-31 00:00:00", "2025-01-31 15:00:00", "2025-02-01 00:00:00",
                           "2025-02-01 23:59:59", "2025-02-02 00:00:00"}) {
    addEntry(when);
  }
  set("LogFilt_Enabled", 1);
  set("LogFilt_IntervalEnabled", 1);
  setMachine("LogFilt_IntervalStart", "01/31/2025");
  setMachine("LogFilt_IntervalEnd", "02/01/2025");
  EXPECT_EQ(count(log_.BuildLogFilter()), 4);
}

TEST_F(Log, AnIntervalThatWasNeverChosenIsToday) {
  addEntry("2025-03-10 08:00:00");
  addEntry("2025-03-09 08:00:00");
  set("LogFilt_Enabled", 1);
  set("LogFilt_IntervalEnabled", 1);
  EXPECT_EQ(count(log_.BuildLogFilter()), 1);
}

TEST_F(Log, PurgeKeepsTheLastDays) {
  struct {
    std::int32_t after;
    std::int32_t enabled;
    bool result;
    std::int64_t left;
  } const cases[] = {
      {30, 0, false, 5}, {0, 1, false, 5},         {-3, 1, false, 5},
      {3, 1, true, 4},   {2147483647, 1, true, 5}, {1, 1, true, 1},
  };
  for (const auto& each : cases) {
    log_.ClearLog();
    for (const char* when : {"2025-03-08 00:00:00", "2025-03-08 00:00:01", "2025-03-09 10:00:00", "2025-03-10 00:00:00",
                             "2025-03-10 00:00:01"}) {
      addEntry(when);
    }
    set("Log_DeleteAfter", each.after, foundation::StoreDatabase);
    set("Log_DeleteEnabled", each.enabled, foundation::StoreDatabase);
    EXPECT_EQ(log_.PurgeOldLogEntries(), each.result) << each.after;
    EXPECT_EQ(count("1=1"), each.left) << each.after;
    EXPECT_TRUE(log_.WriteLog(LogError, "still open"));
  }
}

TEST_F(Log, ClearEmptiesIt) {
  addEntry("2025-03-08 00:00:00");
  log_.ClearLog();
  EXPECT_TRUE(entries().empty());
  EXPECT_TRUE(log_.WriteLog(LogError, "again"));
  EXPECT_EQ(entries().size(), 1U);
}

}  // namespace
}  // namespace security
