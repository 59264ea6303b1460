#include "ingest/maintenance.h"

#include <gtest/gtest.h>

#include "support/exchange.h"

namespace ingest {
namespace {

using support::sampleCall;

class MaintenanceTest : public ::testing::Test {
 protected:
  void add(exchange::CallRecord call = sampleCall()) { ASSERT_EQ(copy.recorder.AddRecord(call), Recording::Recorded); }
  void addAt(int month, int day, int hour, int second) {
    exchange::CallRecord call = sampleCall();
    call.month = month;
    call.day = day;
    call.hour = hour;
    call.minute = 0;
    call.second = second;
    add(call);
  }
  void keepDays(int days) { copy.config.WriteConfigInt(days, "Sterge", "Calls", foundation::StoreDatabase); }
  RecalcOptions march() {
    return {.firstDay = *base::DateTime::fromParts(2024, 3, 1), .lastDay = *base::DateTime::fromParts(2024, 3, 31)};
  }

  support::ExchangeFiles files;
  support::RunningCopy copy{files};
};

TEST_F(MaintenanceTest, RetentionKeepsTodayAndTheDaysBefore) {
  // Now is noon of 4 March 2024.
  struct Case {
    int days;
    std::int64_t kept;
  };
  for (const auto& [days, kept] : {Case{-1, 6}, Case{0, 6}, Case{40, 6}, Case{3, 4}, Case{2, 3}, Case{1, 1}}) {
    copy.main->execute("delete from Calls");
    addAt(2, 1, 9, 0);
    addAt(3, 1, 23, 59);
    addAt(3, 2, 9, 0);
    addAt(3, 3, 0, 1);
    addAt(3, 4, 0, 0);  // midnight itself falls to the day before
    addAt(3, 4, 0, 1);
    keepDays(days);
    EXPECT_EQ(deleteOldCalls(*copy.main, copy.config, copy.clock), 6 - kept) << days;
    EXPECT_EQ(copy.callCount(), kept) << days;
  }
}

TEST_F(MaintenanceTest, AnApostropheIsTakenDoubledAndRefusedAlone) {
  exchange::CallRecord call = sampleCall("0213'45");
  call.incoming = 1;  // its price needs no statement with the number
  add(call);
  add();
  HideNumber(*copy.main, "0213''45");
  EXPECT_EQ(copy.value("select count(*) as n from Calls where hidden <> 0"), "1");
  EXPECT_EQ(copy.value("select [number] from FilteredNumbers"), "0213'45");
  for (const char* number : {"0213'45", "x' or '1'='1", "'''"}) {
    EXPECT_THROW(HideNumber(*copy.main, number), jet::Error) << number;
    EXPECT_THROW(ShowNumber(*copy.main, number), jet::Error) << number;
  }
  EXPECT_EQ(copy.value("select count(*) as n from Calls where hidden <> 0"), "1");
  ShowNumber(*copy.main, "0213''45");
  EXPECT_EQ(copy.value("select count(*) as n from Calls where hidden <> 0"), "0");

  RecalcOptions options = march();
  options.names = true;
  options.provider = "x' or '1'='1";
  const RecalcResult result = Recalc(copy.parts, options);
  EXPECT_EQ(result.rows, 0);
  EXPECT_NE(result.error.find("apostrophe"), std::string::npos);
}

TEST_F(MaintenanceTest, RetentionLeavesCallsWithoutADate) {
  exchange::CallRecord call = sampleCall();
  call.month = 13;
  add(call);
  keepDays(1);
  EXPECT_EQ(deleteOldCalls(*copy.main, copy.config, copy.clock), 0);
  EXPECT_EQ(copy.callCount(), 1);
}

TEST_F(MaintenanceTest, HidingANumberCoversStoredCallsAndThoseToCome) {
  add();
  add(sampleCall("34567890"));
  HideNumber(*copy.main, "3456789");
  add();
  EXPECT_EQ(copy.value("select count(*) as c from Calls where Hidden"), "2");
  ShowNumber(*copy.main, "3456789");
  add();
  EXPECT_EQ(copy.value("select count(*) as c from Calls where Hidden"), "0");
  EXPECT_THROW(HideNumber(*copy.main, "34'56"), jet::Error);
}

TEST_F(MaintenanceTest, RepricingAppliesNewTariffsToThePeriodAndProvider) {
  add();
  addAt(4, 1, 0, 0);
  copy.tariffs.database().execute("update charges set charge_value = 1");
  RecalcOptions options = march();
  options.reprice = true;
  options.provider = "Nobody";
  EXPECT_EQ(Recalc(copy.parts, options).rows, 0);
  options.provider = "Telco";
  EXPECT_EQ(Recalc(copy.parts, options).changed, 1);
  EXPECT_EQ(copy.value("select Price & ' ' & Price_Ref as p from Calls where Month(DateTime)=3"), "2 10");
  EXPECT_EQ(copy.value("select Price & ' ' & Price_Ref as p from Calls where Month(DateTime)=4"), "0.2 1");
}

TEST_F(MaintenanceTest, EachSwitchRecomputesItsColumnsAlone) {
  const auto state = [this] {
    return copy.value("select Price & '|' & Price_Ref & '|' & Department & '|' & Owner & '|' & Name as s from Calls");
  };
  exchange::CallRecord call = sampleCall();
  call.accountCode = "1234";
  add(call);
  EXPECT_EQ(state(), "0.2|1|Sales|Ana|Pop Ion");
  copy.parties.extensions[0].department = "Research";
  copy.parties.clients[0].name = "Ema";
  copy.parties.reindex();
  copy.currencies.entries[1].ratio = 4;
  copy.main->execute("insert into Contacts (RecordID, Contact, Tel_String) values (2, 'Ion', '0040213456789')");

  EXPECT_EQ(Recalc(copy.parts, march()).changed, 1);
  EXPECT_EQ(state(), "0.2|1|Sales|Ana|Pop Ion");
  const std::pair<bool RecalcOptions::*, const char*> steps[] = {
      {&RecalcOptions::reconvert, "0.2|0.8|Sales|Ana|Pop Ion"},
      {&RecalcOptions::department, "0.2|0.8|Research|Ana|Pop Ion"},
      {&RecalcOptions::owner, "0.2|0.8|Research|Ema|Pop Ion"},
      {&RecalcOptions::names, "0.2|0.8|Research|Ema|Ion"}};
  for (const auto& [which, expected] : steps) {
    RecalcOptions options = march();
    options.*which = true;
    Recalc(copy.parts, options);
    EXPECT_EQ(state(), expected);
  }
}

TEST_F(MaintenanceTest, AddedSecondsChangeDurationAndPrice) {
  add();
  RecalcOptions options = march();
  options.addSeconds = 60;
  Recalc(copy.parts, options);
  EXPECT_EQ(copy.value("select TotalTime & '|' & Price as s from Calls"), "121|0.3");
  options.addSeconds = -500;
  Recalc(copy.parts, options);
  EXPECT_EQ(copy.value("select TotalTime & '|' & Price as s from Calls"), "0|0");
}

TEST_F(MaintenanceTest, APeriodReachesToItsLastSecond) {
  exchange::CallRecord call = sampleCall();
  call.day = 31;
  call.hour = 23;
  call.minute = call.second = 59;
  add(call);
  addAt(3, 1, 0, 0);
  EXPECT_EQ(Recalc(copy.parts, march()).rows, 2);
}

// Seconds that are not charged leave the duration when a call is recorded, and not again when it is priced again.
TEST_F(MaintenanceTest, RepricingKeepsTheDuration) {
  copy.config.WriteConfigInt(1, "Seconds_not_charged", "Calls", foundation::StoreDatabase);
  copy.parties.providers[0].freeSeconds = 10;
  add();
  const std::string recorded = copy.value("select TotalTime from Calls");
  RecalcOptions options = march();
  options.reprice = true;
  for (int i = 0; i < 2; ++i) EXPECT_EQ(Recalc(copy.parts, options).changed, 1);
  EXPECT_EQ(copy.value("select TotalTime from Calls"), recorded);
}

TEST_F(MaintenanceTest, AShortCallThatIsIgnoredNowStaysAsItWas) {
  add();
  copy.config.WriteConfigInt(61, "Ignore_short_calls", "Calls", foundation::StoreDatabase);
  RecalcOptions options = march();
  options.reprice = true;
  options.department = true;
  copy.parties.extensions[0].department = "Research";
  copy.parties.reindex();
  EXPECT_EQ(Recalc(copy.parts, options).changed, 0);
  EXPECT_EQ(copy.value("select Price & '|' & Department as s from Calls"), "0.2|Sales");
}

TEST_F(MaintenanceTest, ARowWhoseTrunkFindsNoProviderStaysAsItWas) {
  add();
  for (auto& trunk : copy.parties.trunks) trunk.providerId = -2;
  RecalcOptions options = march();
  options.reprice = true;
  const RecalcResult result = Recalc(copy.parts, options);
  EXPECT_EQ(result.rows, 1);
  EXPECT_EQ(result.changed, 0);
}

TEST_F(MaintenanceTest, TheProgressWindowShowsEveryHundredRowsAndCanStop) {
  for (int i = 0; i < 250; ++i) add();
  RecalcOptions options = march();
  options.reprice = true;
  const RecalcResult all = Recalc(copy.parts, options);
  EXPECT_EQ(all.rows, 250);
  EXPECT_EQ(copy.person.ranges, std::vector<std::int64_t>{2});
  EXPECT_EQ(copy.person.steps, (std::vector<std::int64_t>{0, 1, 2}));
  copy.person.stopAt = 1;
  const RecalcResult some = Recalc(copy.parts, options);
  EXPECT_TRUE(some.cancelled);
  EXPECT_EQ(some.rows, 100);
  EXPECT_EQ(copy.person.windowsClosed, 2u);
}

TEST_F(MaintenanceTest, AnEmptyPeriodShowsTheWindowAndChangesNothing) {
  EXPECT_EQ(Recalc(copy.parts, march()).rows, 0);
  EXPECT_EQ(copy.person.windowsClosed, 1u);
}

TEST_F(MaintenanceTest, AProviderThatBreaksOutOfItsQuotesIsRefused) {
  add();
  RecalcOptions options = march();
  for (const char* provider : {"Tel'co", "x' or '1'='1"}) {
    options.provider = provider;
    const RecalcResult result = Recalc(copy.parts, options);
    EXPECT_NE(result.error, "") << provider;
    EXPECT_EQ(result.rows, 0) << provider;
  }
}

TEST_F(MaintenanceTest, AFaultIsSaidAndLoggedAndWhatWasRepricedStays) {
  add();
  add();
  copy.main->execute("update Calls set Price = 0");
  copy.main->execute("update Calls set DialNumber = '34\"5678' where RecordID = 2");
  RecalcOptions options = march();
  options.reprice = options.names = true;
  const RecalcResult result = Recalc(copy.parts, options);
  EXPECT_NE(result.error, "");
  EXPECT_EQ(copy.logged(), "9 Recalc: " + result.error + "\n");
  EXPECT_EQ(result.changed, 1);
  EXPECT_EQ(copy.value("select Price from Calls where RecordID = 1"), "0.2");
  EXPECT_EQ(copy.value("select Price from Calls where RecordID = 2"), "0");
}

}  // namespace
}  // namespace ingest
