#include "foundation/config_manager.h"

#include <gtest/gtest.h>

#include <set>
#include <thread>

#include "jet/error.h"
#include "schema/schema.h"
#include "support/database_folder.h"
#include "support/scripted_operator.h"

namespace foundation {

using namespace support;

namespace {

class MachineSettings : public testing::Test {
 protected:
  DatabaseFolder folder_;
  MachineStore store_{folder_ / "store.ini"};
  ConfigManager config_{store_};
};

TEST_F(MachineSettings, AStoredDefaultCountsAsNotFound) {
  EXPECT_EQ(config_.ReadConfigInt("Upper pane %", "general", StoreMachine, 70), 70);
  EXPECT_FALSE(config_.LastFound());
  EXPECT_TRUE(config_.WriteConfigInt(70, "Upper pane %", "general", StoreMachine));
  EXPECT_TRUE(config_.LastFound());
  EXPECT_EQ(config_.ReadConfigInt("Upper pane %", "general", StoreMachine, 70), 70);
  EXPECT_FALSE(config_.LastFound());
  EXPECT_EQ(config_.ReadConfigInt("Upper pane %", "general", StoreMachine, 50), 70);
  EXPECT_TRUE(config_.LastFound());

  config_.WriteConfigString("---", "PathDatabase", "general", StoreMachine);
  EXPECT_EQ(config_.ReadConfigString("PathDatabase", "general", StoreMachine, "---"), "---");
  EXPECT_FALSE(config_.LastFound());
}

TEST_F(MachineSettings, NothingDeletesAValueOrASection) {
  config_.WriteConfigString("x", "Lang", "general", StoreMachine);
  config_.WriteConfigString("y", "LastUser", "general", StoreMachine);
  EXPECT_TRUE(config_.WriteConfigString(std::nullopt, "Lang", "general", StoreMachine));
  EXPECT_EQ(config_.ReadConfigString("Lang", "general", StoreMachine, "-"), "-");
  EXPECT_TRUE(config_.WriteConfigString(std::nullopt, "", "general", StoreMachine));
  EXPECT_EQ(config_.ReadConfigString("LastUser", "general", StoreMachine, "-"), "-");
}

TEST_F(MachineSettings, KeepsTheWindowPlacement) {
  EXPECT_EQ(config_.ReadWindowPlacement(), std::nullopt);
  WindowPlacement placement{};
  placement[0] = 44;
  placement[43] = 255;
  EXPECT_TRUE(config_.WriteWindowPlacement(placement));
  EXPECT_EQ(config_.ReadWindowPlacement(), placement);
  store_.writeBinary("general", "Window Placement", {1, 2, 3});
  EXPECT_EQ(config_.ReadWindowPlacement(), std::nullopt);
}

// One copy of the program on a database file.
struct Copy {
  Copy(const DatabaseFolder& folder, const char* store, jet::OpenMode mode = jet::OpenMode::ReadWrite)
      : machine(folder / store), database(jet::openDatabase(folder / schema::kMainFile, mode)) {
    tags.LoadTouch(*database);
    config.OpenConfig(*database, tags);
  }
  std::int32_t number(std::string_view key) { return config.ReadConfigInt(key, "general", StoreDatabase, -7); }
  std::string text(std::string_view key) { return config.ReadConfigString(key, "general", StoreDatabase, "none"); }

  ScriptedOperator person;
  ChangeTags tags{person};
  MachineStore machine;
  std::unique_ptr<jet::Database> database;
  ConfigManager config{machine};
};

class SharedSettings : public testing::Test {
 protected:
  SharedSettings() { schema::createMainDatabase(folder_ / schema::kMainFile); }
  DatabaseFolder folder_;
};

TEST_F(SharedSettings, AreFoundByTheirPath) {
  Copy copy(folder_, "a.ini");
  EXPECT_EQ(copy.number("DbVersion"), 1);
  EXPECT_TRUE(copy.config.LastFound());
  EXPECT_EQ(copy.number("dbversion"), 1);
  EXPECT_EQ(copy.number("Missing"), -7);
  EXPECT_FALSE(copy.config.LastFound());
  EXPECT_EQ(copy.text("DbVersion"), "");  // an integer's row: its text is null
  EXPECT_TRUE(copy.config.LastFound());
}

TEST_F(SharedSettings, AnyOtherSelectorIsTheDatabase) {
  Copy copy(folder_, "a.ini");
  EXPECT_TRUE(copy.config.WriteConfigInt(3, "OrganizationTVA", "general", 7));
  EXPECT_EQ(copy.number("OrganizationTVA"), 3);
  EXPECT_EQ(copy.machine.readInt("general", "OrganizationTVA"), std::nullopt);
}

TEST_F(SharedSettings, AWriteMakesOneRowAndMovesTheTag) {
  Copy copy(folder_, "a.ini");
  EXPECT_TRUE(copy.config.WriteConfigString("first", "Tariffs\\Trunks", "Tariffs", StoreDatabase));
  EXPECT_TRUE(copy.config.WriteConfigString("second", "Tariffs\\Trunks", "Tariffs", StoreDatabase));
  EXPECT_TRUE(copy.config.WriteConfigString(std::nullopt, "OrganizationTel", "general", StoreDatabase));
  const auto rows =
      copy.database->openSnapshot("select String_Value from Config where Path = 'Tariffs\\Tariffs\\Trunks'");
  ASSERT_EQ(rows.rowCount(), 1U);
  EXPECT_EQ(rows.at(0, 0).toText(), "second");
  const auto empty =
      copy.database->openSnapshot("select String_Value from Config where Path = 'general\\OrganizationTel'");
  EXPECT_FALSE(empty.at(0, 0).isNull());
  EXPECT_EQ(copy.database->openSnapshot("select [Value] from Touch where Tag = 'Config'").at(0, 0).toLong(), 3);
}

TEST_F(SharedSettings, AnotherCopysWriteIsReadNext) {
  Copy a(folder_, "a.ini");
  Copy b(folder_, "b.ini");
  for (int i = 0; i < 20; ++i) {
    b.config.WriteConfigInt(i, "DbVersion", "general", StoreDatabase);
    ASSERT_EQ(a.number("DbVersion"), i);
  }
  // A change that moved no tag (another program's) is seen as well: the row is read again.
  b.database->execute("update Config set Int_Value = 99 where Path = 'general\\DbVersion'");
  EXPECT_EQ(a.number("DbVersion"), 99);
  b.database->execute("delete from Config where Path = 'general\\DbVersion'");
  EXPECT_EQ(a.number("DbVersion"), -7);
  a.database->execute("insert into Config (Path, Int_Value) values ('general\\DbVersion', 5)");
  EXPECT_EQ(a.number("DbVersion"), 5);
}

TEST_F(SharedSettings, AWriteThatIsUndoneIsNotRead) {
  Copy copy(folder_, "a.ini");
  {
    const jet::Transaction transaction(*copy.database);
    copy.config.WriteConfigInt(42, "DbVersion", "general", StoreDatabase);
    EXPECT_EQ(copy.number("DbVersion"), 42);
  }
  EXPECT_EQ(copy.number("DbVersion"), 1);
}

TEST_F(SharedSettings, AMissingTagIsReportedAtEveryAccess) {
  Copy copy(folder_, "a.ini");
  copy.database->execute("delete from Touch where Tag = 'Config'");
  copy.number("DbVersion");
  copy.number("DbVersion");
  EXPECT_EQ(copy.person.messages, std::vector<std::string>(2, "Non-fatal: Invalid touch tag."));
}

TEST_F(SharedSettings, AReadOnlyDatabaseRefusesWritesQuietly) {
  Copy copy(folder_, "a.ini", jet::OpenMode::ReadOnly);
  EXPECT_TRUE(copy.config.DatabaseReadOnly());
  EXPECT_FALSE(copy.config.WriteConfigInt(9, "DbVersion", "general", StoreDatabase));
  EXPECT_FALSE(copy.config.WriteConfigString("x", "ResellerName", "general", StoreDatabase));
  EXPECT_EQ(copy.number("DbVersion"), 1);
  EXPECT_TRUE(copy.config.WriteConfigInt(9, "Preview mode", "general", StoreMachine));
  EXPECT_EQ(copy.database->openSnapshot("select [Value] from Touch where Tag = 'Config'").at(0, 0).toLong(), 0);
}

TEST_F(SharedSettings, TwoCopiesThatTakeNumbersAtTheSameTimeGetEachOnce) {
  constexpr int kEach = 20;
  Copy first(folder_, "a.ini");
  Copy second(folder_, "b.ini");
  const std::int32_t before = first.config.ReadConfigInt("LastCurrencyID", "general", StoreDatabase, -1);
  std::vector<std::int32_t> taken[2];
  const auto take = [](Copy& copy, std::vector<std::int32_t>& numbers) {
    for (int i = 0; i < kEach; ++i) {
      numbers.push_back(copy.config.takeNumber("LastCurrencyID", "general").value_or(-1));
      copy.tags.Touch("Calls");
    }
  };
  std::thread other(take, std::ref(second), std::ref(taken[1]));
  take(first, taken[0]);
  other.join();

  std::set<std::int32_t> all(taken[0].begin(), taken[0].end());
  all.insert(taken[1].begin(), taken[1].end());
  EXPECT_EQ(all.size(), 2U * kEach);
  EXPECT_EQ(*all.rbegin(), before + 2 * kEach - 1);
  EXPECT_EQ(first.database->openSnapshot("select [Value] from Touch where Tag = 'Calls'").at(0, 0).toLong(), 2 * kEach);
}

TEST_F(SharedSettings, ANumberThatNobodyCountedBeginsAtOne) {
  Copy copy(folder_, "a.ini");
  EXPECT_EQ(copy.config.takeNumber("Tickets", "general"), std::nullopt);
  EXPECT_EQ(copy.config.takeNumber("Tickets", "general"), 1);
  EXPECT_EQ(copy.number("Tickets"), 2);
}

TEST_F(SharedSettings, AQuotationMarkInAKeyNamesNoSetting) {
  Copy copy(folder_, "a.ini");
  EXPECT_EQ(copy.number("x\" or \"1\"=\"1"), -7);
  EXPECT_FALSE(copy.config.WriteConfigInt(9, "x\" or \"1\"=\"1", "general", StoreDatabase));
  EXPECT_EQ(copy.number("DbVersion"), 1);
}

}  // namespace
}  // namespace foundation
