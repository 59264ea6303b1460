#include "exchange/party_definitions.h"

#include <gtest/gtest.h>

#include "base/printf.h"
#include "foundation/definition_change.h"
#include "support/test_office.h"

namespace exchange {
namespace {

using foundation::StoreDatabase;

class PartyDefinitionsTest : public testing::Test {
 protected:
  void store(std::string_view key, std::string_view section, std::string_view value) {
    office.config.WriteConfigString(value, key, section, StoreDatabase);
  }
  void store(std::string_view key, std::string_view section, int value) {
    office.config.WriteConfigInt(value, key, section, StoreDatabase);
  }
  std::string stored(std::string_view key, std::string_view section) {
    return office.config.ReadConfigString(key, section, StoreDatabase, "nothing");
  }
  PartyDefinitions load() {
    PartyDefinitions parties(office.config);
    parties.load(*office.main, office.tariffs.get());
    return parties;
  }

  support::TestOffice office;
};

TEST_F(PartyDefinitionsTest, ExtensionValuesAreSplit) {
  const struct {
    const char* value;
    const char* extension;  // null: the entry is skipped
    const char* description;
    const char* department;
  } cases[] = {
      {"201;Anna;Sales", "201", "Anna", "Sales"},
      {"201;;Sales", "201", "Sales", ""},
      {"201", "201", "", ""},
      {";201;;;Anna;", "201", "Anna", ""},
      {"201;Anna;Sales;more", "201", "Anna", "Sales"},
      {"", nullptr, "", ""},
      {";;", nullptr, "", ""},
      {"!!!", nullptr, "", ""},
  };
  store("ExtCount", "Calls", 1);
  for (const auto& test : cases) {
    store("ExtDef0", "Tariffs\\Extensions", test.value);
    const PartyDefinitions parties = load();
    ASSERT_EQ(parties.extensions.size(), test.extension == nullptr ? 0u : 1u) << test.value;
    if (test.extension == nullptr) continue;
    EXPECT_EQ(parties.extensions[0].extension, test.extension) << test.value;
    EXPECT_EQ(parties.extensions[0].description, test.description) << test.value;
    EXPECT_EQ(parties.extensions[0].department, test.department) << test.value;
  }
}

TEST_F(PartyDefinitionsTest, MissingEntriesAreSkipped) {
  store("ConturiCount", "Calls", 3);
  store("ConturiDef0", "Tariffs\\Accounts", "11;First;A");
  store("ConturiDef2", "Tariffs\\Accounts", "33;Third;C");
  const PartyDefinitions parties = load();
  ASSERT_EQ(parties.accounts.size(), 2u);
  EXPECT_EQ(parties.accounts[1].account, "33");
}

TEST_F(PartyDefinitionsTest, TrunkValuesAreSplit) {
  const struct {
    const char* value;
    tagTRUNKINFO trunk;
  } cases[] = {
      {"021555;2;17;Normal;1;1", {"021555", "17", 2, "Normal", 1, 1}},
      {";2;17;Normal;1;0", {"-", "17", 2, "Normal", 1, 0}},
      {"L1;2;17;;1;0", {"L1", "17", 2, "", 1, 0}},  // as a trunk without profile is saved
      {"-;-1;;;0;0", {"-", "1", -1, "", 0, 0}},     // as a nameless one is
      {"L1;2;17", {"L1", "17", 2, "", 0, 0}},
      {"L1;2;;17;Normal", {"L1", "17", 2, "Normal", 0, 0}},
      {"", {"-", "1", 0, "", 0, 0}},
      {"!!!", {"", "1", 0, "", 0, 0}},
  };
  for (const auto& test : cases) {
    store("LiniiDef0", "Tariffs\\Trunks", test.value);
    const PartyDefinitions parties = load();
    const tagTRUNKINFO& trunk = parties.trunks.at(0);
    EXPECT_EQ(trunk.label, test.trunk.label) << test.value;
    EXPECT_EQ(trunk.trunk, test.trunk.trunk) << test.value;
    EXPECT_EQ(trunk.providerId, test.trunk.providerId) << test.value;
    EXPECT_EQ(trunk.profile, test.trunk.profile) << test.value;
    EXPECT_EQ(trunk.pulses, test.trunk.pulses) << test.value;
    EXPECT_EQ(trunk.ignoreZeroPulses, test.trunk.ignoreZeroPulses) << test.value;
  }
}

TEST_F(PartyDefinitionsTest, ThereAreAlways256Trunks) {
  store("LiniiCount", "Calls", 1);
  store("LiniiDef255", "Tariffs\\Trunks", "Last;2;900;Normal;0;0");
  const PartyDefinitions parties = load();
  ASSERT_EQ(parties.trunks.size(), 256u);
  EXPECT_EQ(parties.trunks[254].trunk, "255");
  EXPECT_EQ(parties.trunks[254].providerId, 0);
  EXPECT_EQ(parties.findTrunk("900"), &parties.trunks[255]);
}

TEST_F(PartyDefinitionsTest, SavedTextsReplaceTheSeparator) {
  PartyDefinitions parties = load();
  parties.extensions = {{"201", "A;B", "C;D"}};
  parties.accounts = {{"1;2", "A;B", "C;D"}};
  parties.trunks[0] = {"L;1", "1;7", 2, "Normal", 1, 0};
  parties.trunks[1] = {"", "", 2, "Normal", 0, 0};
  parties.save(*office.main);
  EXPECT_EQ(stored("ExtDef0", "Tariffs\\Extensions"), "201;A,B;C,D");
  EXPECT_EQ(stored("ConturiDef0", "Tariffs\\Accounts"), "1,2;A,B;C,D");
  EXPECT_EQ(stored("LiniiDef0", "Tariffs\\Trunks"), "L,1;2;1,7;Normal;1;0");
  EXPECT_EQ(stored("LiniiDef1", "Tariffs\\Trunks"), "-;-1;;;0;0");
  EXPECT_EQ(office.config.ReadConfigInt("LiniiCount", "Calls", StoreDatabase, -1), 256);
  EXPECT_EQ(office.config.ReadConfigInt("ExtCount", "Calls", StoreDatabase, -1), 1);
}

TEST_F(PartyDefinitionsTest, EverythingComesBack) {
  office.tariffs->execute("insert into providers (provider_id, provider_name) values (2, 'Telco')");
  office.tariffs->execute("insert into providers (provider_id) values (3)");
  office.tariffs->execute(
      "insert into prefixes2 (prefix_id, prefix_name, prefix_ctry) values ('0040', 'Any', 'Romania')");
  office.tariffs->execute(
      "insert into prefixes2 (prefix_id, prefix_name, prefix_ctry) values ('004021', 'Bucharest', 'Romania')");
  PartyDefinitions parties = load();
  ASSERT_EQ(parties.providers.size(), 2u);
  parties.providers[0].localPrefixes = "21;31";
  parties.providers[0].freeSeconds = 5;
  parties.extensions = {{"201", "Anna", "Sales"}, {"202", "Ion", "Stores"}};
  parties.accounts = {{"12??", "Trips", "Board"}};
  parties.clients = {{"77??", "Client A", "Folder A"}, {"7777", "Client B", "Folder B"}};
  parties.trunks[3] = {"L4", "17", 2, "", 1, 1};
  parties.save(*office.main);

  const PartyDefinitions again = load();
  EXPECT_EQ(again.providers[0].name, "Telco");
  EXPECT_EQ(again.providers[0].localPrefixes, "21;31");
  EXPECT_EQ(again.providers[0].freeSeconds, 5);
  EXPECT_EQ(again.providers[1].name, "");
  EXPECT_EQ(again.departmentOfExtension("202"), "Stores");
  EXPECT_EQ(again.departmentOfAccount("12ab"), "Board");
  EXPECT_EQ(again.departmentOfAccount("123"), "");
  ASSERT_NE(again.findClient("7777"), nullptr);
  EXPECT_EQ(again.findClient("7777")->name, "Client A");
  EXPECT_EQ(again.findClient("8777"), nullptr);
  ASSERT_NE(again.findTrunk("17"), nullptr);
  EXPECT_EQ(again.findTrunk("17")->profile, "");
  EXPECT_EQ(again.findTrunk("17")->ignoreZeroPulses, 1);
  ASSERT_NE(again.findPrefix("0040213456"), nullptr);
  EXPECT_EQ(again.findPrefix("0040213456")->name, "Bucharest");
  EXPECT_EQ(again.findPrefix("0040313456")->name, "Any");
  EXPECT_EQ(again.findPrefix("0044"), nullptr);
  EXPECT_EQ(again.countryCode, "40");
  EXPECT_EQ(again.areaCode, "21");
}

TEST_F(PartyDefinitionsTest, OfEqualExtensionsTheLastGivesTheDepartment) {
  PartyDefinitions parties = load();
  parties.extensions = {{"201", "Anna", "Sales"}, {"201", "Ion", "Stores"}};
  parties.reindex();
  EXPECT_EQ(parties.departmentOfExtension("201"), "Stores");
  EXPECT_EQ(parties.descriptionOfExtension("201"), "Anna");
}

TEST_F(PartyDefinitionsTest, AFailedSaveChangesNothing) {
  PartyDefinitions parties = load();
  parties.clients = {{"1", "Client A", ""}};
  parties.save(*office.main);
  parties.extensions = {{"201", "Anna", "Sales"}};
  parties.clients = {{"1", "O'Hara", ""}};
  EXPECT_THROW(parties.save(*office.main), jet::Error);
  const PartyDefinitions again = load();
  EXPECT_TRUE(again.extensions.empty());
  ASSERT_EQ(again.clients.size(), 1u);
  EXPECT_EQ(again.clients[0].name, "Client A");
}

TEST_F(PartyDefinitionsTest, WithoutTariffsTheReferencesAreEmpty) {
  PartyDefinitions parties(office.config);
  parties.load(*office.main, nullptr);
  EXPECT_TRUE(parties.providers.empty());
  EXPECT_EQ(parties.findPrefix("0040"), nullptr);
}

// The definitions as another copy of the program holds them.
struct OtherCopy {
  explicit OtherCopy(support::TestOffice& office)
      : main(jet::openDatabase(office.main->path(), jet::OpenMode::ReadWrite)),
        tags(office.person),
        config(office.machine) {
    tags.LoadTouch(*main);
    config.OpenConfig(*main, tags);
    parties.load(*main, office.tariffs.get());
  }

  std::unique_ptr<jet::Database> main;
  foundation::ChangeTags tags;
  foundation::ConfigManager config;
  PartyDefinitions parties{config};
};

TEST_F(PartyDefinitionsTest, AChangeIsMadeOnWhatAnotherCopyWrote) {
  PartyDefinitions parties = load();
  OtherCopy other(office);
  other.parties.extensions = {{"201", "Anna", "Sales"}};
  other.parties.save(*other.main);
  {
    foundation::DefinitionChange change(parties, *office.main, office.tariffs.get());
    EXPECT_TRUE(change.reloaded());
    parties.extensions.push_back({"202", "Dan", "Stores"});
    change.save();
  }
  EXPECT_EQ(load().extensions.size(), 2U);

  foundation::DefinitionChange(parties, *office.main, office.tariffs.get()).lists().extensions.clear();
  EXPECT_EQ(load().extensions.size(), 2U);
  EXPECT_TRUE(parties.reloadIfChanged(*office.main, office.tariffs.get()));
  EXPECT_EQ(parties.extensions.size(), 2U) << "what was not saved is still held";
}

TEST_F(PartyDefinitionsTest, AnotherCopysChangesAreNoticed) {
  PartyDefinitions parties = load();
  parties.extensions = {{"201", "Anna", "Sales"}};
  parties.save(*office.main);
  EXPECT_FALSE(parties.changed(*office.main, office.tariffs.get()));

  OtherCopy other(office);
  other.parties.extensions[0].department = "Stores";
  other.parties.save(*other.main);

  EXPECT_TRUE(parties.reloadIfChanged(*office.main, office.tariffs.get()));
  EXPECT_EQ(parties.departmentOfExtension("201"), "Stores");
  EXPECT_FALSE(parties.reloadIfChanged(*office.main, office.tariffs.get()));

  office.tariffs->execute("insert into providers (provider_id, provider_name) values (2, 'Telco')");
  EXPECT_TRUE(parties.reloadIfChanged(*office.main, office.tariffs.get()));
  EXPECT_NE(parties.findProvider(2), nullptr);
}

TEST_F(PartyDefinitionsTest, SavingWhatIsStoredWritesNothing) {
  PartyDefinitions parties = load();
  parties.extensions = {{"201", "Anna", "Sales"}};
  parties.clients = {{"1", "Client A", ""}};
  parties.save(*office.main);
  const auto settings = office.main->tableVersion("Config");
  const auto clients = office.main->tableVersion("Clients");
  parties.save(*office.main);
  EXPECT_EQ(office.main->tableVersion("Config"), settings);
  EXPECT_EQ(office.main->tableVersion("Clients"), clients);
}

TEST_F(PartyDefinitionsTest, TheColumnDecidesWhetherExtensionsAreTexts) {
  EXPECT_TRUE(load().extensionIsText);
  const auto old = jet::createDatabase(office.folder / "old.mdb");
  old->createTable({.name = "Calls", .fields = {{.name = "Extension", .type = jet::Type::Long}}});
  old->createTable({.name = "Clients", .fields = {{.name = "Name"}, {.name = "Account"}, {.name = "Folder"}}});
  old->createTable({.name = "Config", .fields = {{.name = "Path"}}});
  PartyDefinitions parties(office.config);
  parties.load(*old, nullptr);
  EXPECT_FALSE(parties.extensionIsText);
}

}  // namespace
}  // namespace exchange
