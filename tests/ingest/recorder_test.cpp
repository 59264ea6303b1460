#include "ingest/recorder.h"

#include <gtest/gtest.h>

#include <functional>

#include "support/exchange.h"

namespace ingest {
namespace {

using support::sampleCall;

class RecorderTest : public ::testing::Test {
 protected:
  Recording add(exchange::CallRecord call) { return copy.recorder.AddRecord(call); }
  // Columns of the last row, parted by "|".
  std::string lastRow(const std::string& columns) {
    const jet::Snapshot rows =
        copy.main->openSnapshot("SELECT TOP 1 " + columns + " FROM Calls ORDER BY RecordID DESC");
    if (rows.empty()) return "no row";
    std::string text;
    for (std::size_t i = 0; i < rows.columns().size(); ++i) text += (i == 0 ? "" : "|") + rows.at(0, i).toText();
    return text;
  }

  support::ExchangeFiles files;
  support::RunningCopy copy{files};
};

TEST_F(RecorderTest, AnOutgoingCallIsStoredPricedAndEnriched) {
  exchange::CallRecord call = sampleCall();
  call.accountCode = "1234";
  call.pulses = 7;
  call.ring = 4;
  call.redirected = 1;
  call.cd = "XY";
  ASSERT_EQ(add(call), Recording::Recorded);
  EXPECT_EQ(lastRow("DialNumber, Extension, Trunk, TotalTime, Pulses, AccountCode, Redirected, Incoming, Ring, CD"),
            "3456789|201|5|61|7|1234|1|0|4|XY");
  EXPECT_EQ(lastRow("Price, Currency, Price_Ref, Profile, Provider, Area, Country"),
            "0.2|EUR|1|Normal|Telco|Bucharest|Romania");
  EXPECT_EQ(lastRow("Name, Department, Owner, Folder, Hidden"), "Pop Ion|Sales|Ana|A|0");
  EXPECT_EQ(copy.main->openSnapshot("SELECT DateTime FROM Calls").at(0, 0).toDateTime()->stored(),
            "2024-03-04 10:20:30");
}

TEST_F(RecorderTest, CallsAreStoredByTheseRules) {
  struct Case {
    const char* rule;
    std::function<void(exchange::CallRecord&)> change;
    const char* columns;
    const char* stored;
  };
  const Case cases[] = {
      {"an incoming call has no price but an area", [](auto& call) { call.incoming = 1; },
       "Price, Currency, Price_Ref, Area, Provider, Name", "0||0|Bucharest|Telco|Pop Ion"},
      {"a contact's name goes before the phonebook's", [](auto& call) { call.dialledNumber = "9999999"; }, "Name",
       "Maria"},
      {"more than digits is not cut to a subscriber", [](auto& call) { call.dialledNumber = "3456789*1"; }, "Name", ""},
      {"an unknown number has no name", [](auto& call) { call.dialledNumber = "7777777"; }, "Name", ""},
      {"a wildcard in the number finds nobody else", [](auto& call) { call.dialledNumber = "99?9999"; }, "Name", ""},
      {"nor does a bracket", [](auto& call) { call.dialledNumber = "[9]9999"; }, "Name", ""},
      {"three characters are not looked up", [](auto& call) { call.dialledNumber = "999"; }, "Name", ""},
      {"four are", [](auto& call) { call.dialledNumber = "9999"; }, "Name", "Maria"},
      {"1 h 2 min 3 s is 3723 seconds", [](auto& call) { call.setDuration(3723); }, "TotalTime", "3723"},
      {"an impossible date is left out, with the price", [](auto& call) { call.month = 13; },
       "DateTime, Price, DialNumber", "|0|3456789"},
      {"an unknown extension takes the account's department",
       [](auto& call) { call.extensionText = "299", call.accountCode = "12ab"; }, "Department, Owner", "Projects|"},
      {"five characters do not match 12??", [](auto& call) { call.extensionText = "", call.accountCode = "12345"; },
       "Department, Owner", "|"},
  };
  for (const Case& each : cases) {
    exchange::CallRecord call = sampleCall();
    each.change(call);
    ASSERT_EQ(add(call), Recording::Recorded) << each.rule;
    EXPECT_EQ(lastRow(each.columns), each.stored) << each.rule;
  }
}

TEST_F(RecorderTest, ATwelveHourClockCountsFromMidnight) {
  exchange::CallRecord call = sampleCall();
  call.hour = 12;
  call.clockMarker = 'A';
  add(call);
  EXPECT_EQ(copy.main->openSnapshot("SELECT DateTime FROM Calls").at(0, 0).toDateTime()->stored(),
            "2024-03-04 00:20:30");
}

TEST_F(RecorderTest, AFilteredNumberHidesItselfAndNotLongerOnes) {
  copy.main->execute("insert into FilteredNumbers ([number]) values ('123')");
  add(sampleCall("123"));
  EXPECT_EQ(lastRow("Hidden"), "-1");
  add(sampleCall("1234"));
  EXPECT_EQ(lastRow("Hidden"), "0");
  add(sampleCall("12"));
  EXPECT_EQ(lastRow("Hidden"), "0");
}

TEST_F(RecorderTest, AnIgnoredShortCallIsSkipped) {
  copy.config.WriteConfigInt(61, "Ignore_short_calls", "Calls", foundation::StoreDatabase);
  EXPECT_EQ(add(sampleCall()), Recording::Skipped);
  EXPECT_EQ(copy.callCount(), 0);
  exchange::CallRecord longer = sampleCall();
  longer.setDuration(62);
  EXPECT_EQ(add(longer), Recording::Recorded);
}

TEST_F(RecorderTest, TheDepartmentSourceCanBeTheAccount) {
  copy.config.WriteConfigInt(1, "Sursa_departament", "Calls", foundation::StoreDatabase);
  exchange::CallRecord call = sampleCall();
  call.accountCode = "12ab";
  add(call);
  EXPECT_EQ(lastRow("Department"), "Projects");
}

TEST_F(RecorderTest, TheExternalPhonebookCanBeOff) {
  copy.config.WriteConfigInt(0, "ExternalPhonebook", "Calls", foundation::StoreDatabase);
  add(sampleCall());
  EXPECT_EQ(lastRow("Name"), "");
}

TEST_F(RecorderTest, ANewTrunkTakesTheFirstFreeEntryAndIsSaved) {
  exchange::CallRecord call = sampleCall();
  call.trunk = 77;
  ASSERT_EQ(add(call), Recording::Recorded);
  EXPECT_EQ(copy.parties.trunks[1].trunk, "77");
  EXPECT_EQ(copy.config.ReadConfigString("LiniiDef1", "Tariffs\\Trunks", foundation::StoreDatabase, ""),
            "-;1;77;Normal;0;0");
  EXPECT_EQ(lastRow("Profile, Provider, Price"), "Normal|Telco|0.2");
}

TEST_F(RecorderTest, TwoCopiesThatMeetNewTrunksTakeAnEntryForEach) {
  support::RunningCopy other(files);
  exchange::CallRecord call = sampleCall();
  call.trunk = 77;
  ASSERT_EQ(add(call), Recording::Recorded);
  for (const int trunk : {78, 77}) {
    call.trunk = trunk;
    ASSERT_EQ(other.recorder.AddRecord(call), Recording::Recorded);
  }
  EXPECT_EQ(other.parties.trunks[1].trunk, "77");
  EXPECT_EQ(other.parties.trunks[2].trunk, "78");
  EXPECT_NE(other.parties.trunks[3].trunk, "77");
}

TEST_F(RecorderTest, WithoutAFreeEntryTheCallIsRejectedAndReported) {
  for (auto& trunk : copy.parties.trunks) trunk.providerId = 1;
  copy.parties.save(*copy.main);
  exchange::CallRecord call = sampleCall();
  call.trunk = 7777;
  EXPECT_EQ(add(call), Recording::Rejected);
  EXPECT_EQ(copy.callCount(), 0);
  EXPECT_EQ(copy.person.beeps, "tt");
  EXPECT_EQ(copy.logged(), "9 IDS_SMDR_TRUNKS_MAX 7777\n");
}

TEST_F(RecorderTest, TheLastMatchingTrunkGivesTheContextAndTheFirstOneThePrice) {
  copy.tariffs.database().execute("insert into providers (provider_id, provider_name) values (2, 'Other')");
  copy.parties.trunks[9] = {.label = "L", .trunk = "5", .providerId = 2, .profile = "Late"};
  copy.parties.save(*copy.main);
  copy.recorder.refreshDefinitions();
  exchange::CallRecord incoming = sampleCall();
  incoming.incoming = 1;
  add(incoming);
  EXPECT_EQ(lastRow("Profile, Provider"), "Late|Other");
  add(sampleCall());
  EXPECT_EQ(lastRow("Profile, Provider, Price"), "Normal|Telco|0.2");
}

TEST_F(RecorderTest, AQuotationMarkInTheNumberIsADatabaseErrorAndStoresNothing) {
  EXPECT_THROW(add(sampleCall("34\"5678")), jet::Error);
  EXPECT_EQ(copy.callCount(), 0);
  EXPECT_EQ(add(sampleCall()), Recording::Recorded);
}

TEST_F(RecorderTest, NothingIsRecordedWhileTheCallsAreClosed) {
  copy.recorder.close();
  EXPECT_EQ(add(sampleCall()), Recording::Failed);
}

TEST(RecorderLongColumnsTest, StoreTheIntegersOfExtensionAndTrunk) {
  support::ExchangeFiles files;
  {
    files.folder.removeDatabase(schema::kMainFile);
    const auto main = jet::createDatabase(files.folder / schema::kMainFile);
    for (jet::TableDef table : schema::mainTables()) {
      for (jet::FieldDef& field : table.fields) {
        if (field.name == "Extension" || field.name == "Trunk") field.type = jet::Type::Long;
      }
      main->createTable(table);
    }
    main->execute("insert into Touch (Tag, [Value]) values ('Config', 0)");
    support::ExchangeFiles::fillMain(*main);
  }
  support::RunningCopy copy(files);
  exchange::CallRecord call = sampleCall();
  call.extensionText = "reception";
  ASSERT_EQ(copy.recorder.AddRecord(call), Recording::Recorded);
  EXPECT_EQ(copy.main->openSnapshot("SELECT Extension FROM Calls").at(0, 0), jet::Value(201));
}

TEST(ForwardingLineTest, HasEveryFigureInItsPlace) {
  exchange::CallRecord call = sampleCall();
  call.redirected = 1;
  call.extension = 0;
  EXPECT_EQ(forwardingLine(call, 0.2, "RON", 1, 19),
            "3456789                        04/03/2024 10:20:30     61      5      0   R       0.20 RON      1.00    "
            "1.19\r\n");
}

}  // namespace
}  // namespace ingest
