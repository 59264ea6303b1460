#include "tariff/currencies.h"

#include <gtest/gtest.h>

#include "foundation/definition_change.h"
#include "support/test_office.h"
#include "tariff/redenomination.h"
#include "tariff/tariff_database.h"

namespace tariff {
namespace {

using foundation::StoreDatabase;

struct CurrenciesTest : testing::Test {
  support::TestOffice office;
  Currencies currencies{office.config, office.language, office.person};
};

TEST_F(CurrenciesTest, ANewDatabaseHasItsDefault) {
  currencies.load(*office.main);
  ASSERT_EQ(currencies.entries.size(), 1u);
  EXPECT_EQ(currencies.Default().name, "RON");
  EXPECT_TRUE(currencies.entries[0].dateModify);
}

TEST_F(CurrenciesTest, ComeBackInTheirOrder) {
  const auto date = base::DateTime::fromParts(2024, 3, 1);
  currencies.entries = {{"EUR", 7, 4.97, date, false, false}, {"RON", 1, 1, std::nullopt, true, true}};
  currencies.save(*office.main);
  Currencies again(office.config, office.language, office.person);
  again.load(*office.main);
  ASSERT_EQ(again.entries.size(), 2u);
  EXPECT_EQ(again.entries[0].name, "EUR");
  EXPECT_EQ(again.entries[0].id, 7);
  EXPECT_EQ(again.entries[0].ratio, 4.97);
  EXPECT_EQ(again.entries[0].dateModify, date);
  EXPECT_FALSE(again.entries[0].isDefault);
  EXPECT_TRUE(again.entries[1].isDefault);
  EXPECT_TRUE(again.entries[1].reverse);
  EXPECT_FALSE(again.entries[1].dateModify);
  EXPECT_EQ(again.findById(1), 1);
  EXPECT_EQ(again.findById(2), -1);
}

TEST_F(CurrenciesTest, NamesKeepSevenCharacters) {
  currencies.entries = {{"LONGNAME", 1, 1, std::nullopt, true, false}, {"ȘILINGII", 2, 1, std::nullopt, false, false}};
  currencies.save(*office.main);
  currencies.load(*office.main);
  EXPECT_EQ(currencies.Default().name, "LONGNAM");
  EXPECT_EQ(currencies.entries[1].name, "ȘILINGI");
}

TEST_F(CurrenciesTest, Convert) {
  currencies.entries = {{"EUR", 1, 0, std::nullopt, false, false},  // without rate, so passed over
                        {"EUR", 2, 5, std::nullopt, false, false},
                        {"HUF", 3, 80, std::nullopt, false, true},
                        {"XXX", 4, 0, std::nullopt, false, false}};
  const struct {
    const char* name;
    double amount;
  } cases[] = {{"EUR", 50}, {"eur", 50}, {"HUF", 0.125}, {"XXX", 0}, {"USD", 0}, {"", 0}};
  for (const auto& test : cases) EXPECT_DOUBLE_EQ(currencies.Convert(10, test.name), test.amount) << test.name;
  EXPECT_DOUBLE_EQ(currencies.rate("HUF"), 0.0125);
}

TEST_F(CurrenciesTest, WithoutDefaultTheNameIsEmpty) {
  EXPECT_EQ(currencies.Default().name, "");
  currencies.entries = {{"EUR", 1, 5, std::nullopt, false, false}};
  EXPECT_EQ(currencies.Default().name, "");
}

TEST_F(CurrenciesTest, NextIdCounts) {
  office.config.WriteConfigInt(5, "LastCurrencyID", "general", StoreDatabase);
  EXPECT_EQ(currencies.NextId(), 5);
  EXPECT_EQ(currencies.NextId(), 6);
  EXPECT_EQ(office.config.ReadConfigInt("LastCurrencyID", "general", StoreDatabase, -1), 7);
  EXPECT_TRUE(office.person.messages.empty());

  office.config.WriteConfigInt(-1, "LastCurrencyID", "general", StoreDatabase);
  EXPECT_EQ(currencies.NextId(), 0);
  EXPECT_EQ(office.person.messages, std::vector<std::string>{"No next number"});
  EXPECT_EQ(office.config.ReadConfigInt("LastCurrencyID", "general", StoreDatabase, -1), 1);
}

TEST_F(CurrenciesTest, AnotherCopysRatesAreNoticed) {
  currencies.load(*office.main);
  EXPECT_FALSE(currencies.reloadIfChanged(*office.main));
  const auto other = jet::openDatabase(office.main->path(), jet::OpenMode::ReadWrite);
  other->execute("update Currency set Ratio = 2");
  EXPECT_TRUE(currencies.reloadIfChanged(*office.main));
  EXPECT_EQ(currencies.entries[0].ratio, 2);
  EXPECT_FALSE(currencies.reloadIfChanged(*office.main));
}

TEST_F(CurrenciesTest, AChangeIsMadeOnTheRatesThatAnotherCopyWrote) {
  currencies.load(*office.main);
  const auto other = jet::openDatabase(office.main->path(), jet::OpenMode::ReadWrite);
  other->execute("update Currency set Ratio = 2");
  foundation::DefinitionChange change(currencies, *office.main);
  currencies.entries.push_back({.name = "HUF", .id = 9, .ratio = 80, .dateModify = std::nullopt});
  change.save();
  EXPECT_EQ(other->openSnapshot("select sum(Ratio) as r from Currency").at(0, 0).toDouble(), 82);
}

struct RedenominationTest : CurrenciesTest {
  bool run() {
    return redenominate(*office.main, office.tariffs.get(), currencies, office.config, office.clock, office.person);
  }
  void oldMoney() {
    currencies.entries = {{"ROL", 1, 1, std::nullopt, true, false},
                          {"EUR", 2, 40000, std::nullopt, false, false},
                          {"HUF", 3, 0.008, std::nullopt, false, true}};  // 125 ROL
    currencies.save(*office.main);
    office.main->execute(
        "insert into Calls (DialNumber, Price, [Currency], Price_Ref) values ('1', 50000, 'ROL', 50000)");
    office.main->execute("insert into Calls (DialNumber, Price, [Currency], Price_Ref) values ('2', 2, 'EUR', 80000)");
    office.tariffs->execute(
        "insert into charges (destination_id, charge_value, charge_pulse_value, charge_currency) "
        "values (1, 3000, 2000, 'ROL')");
    office.tariffs->execute(
        "insert into charges (destination_id, charge_value, charge_pulse_value, charge_currency) "
        "values (2, 3000, 2000, 'EUR')");
  }
  double number(jet::Database& database, const char* query) { return database.openSnapshot(query).at(0, 0).toDouble(); }
};

TEST_F(RedenominationTest, ConvertsCallsTariffsAndRatesOnce) {
  oldMoney();
  ASSERT_TRUE(run());
  EXPECT_EQ(currencies.Default().name, "RON");
  EXPECT_DOUBLE_EQ(currencies.rate("RON"), 1);
  EXPECT_DOUBLE_EQ(currencies.rate("ROL"), 0.0001);
  EXPECT_DOUBLE_EQ(currencies.rate("EUR"), 4);
  EXPECT_DOUBLE_EQ(currencies.rate("HUF"), 0.0125);
  EXPECT_EQ(number(*office.main, "select Price from Calls where DialNumber = '1'"), 5);
  EXPECT_EQ(number(*office.main, "select Price_Ref from Calls where DialNumber = '1'"), 5);
  EXPECT_EQ(number(*office.main, "select Price from Calls where DialNumber = '2'"), 2);
  EXPECT_EQ(number(*office.main, "select Price_Ref from Calls where DialNumber = '2'"), 8);
  EXPECT_EQ(number(*office.main, "select count(*) from Calls where [Currency] = 'RON'"), 1);
  EXPECT_DOUBLE_EQ(number(*office.tariffs, "select charge_value from charges where charge_currency = 'RON'"), 0.3);
  EXPECT_DOUBLE_EQ(number(*office.tariffs, "select charge_pulse_value from charges where charge_currency = 'RON'"),
                   0.2);
  EXPECT_EQ(number(*office.tariffs, "select charge_value from charges where charge_currency = 'EUR'"), 3000);
  EXPECT_EQ(
      office.person.messages,
      std::vector<std::string>{
          "Aplicatia a fost actualizata cu valuta RON (leu greu).\n"
          "Convorbirile costul exprimat in ROL al convorbirilor si tarifelor existente a fost convertit in RON."});
  EXPECT_FALSE(run());
}

TEST_F(RedenominationTest, DoesNothingElsewhere) {
  currencies.load(*office.main);  // RON alone
  EXPECT_FALSE(run());
  currencies.entries.push_back({"EUR", 2, 5, std::nullopt, false, false});  // RON is there
  EXPECT_FALSE(run());
  oldMoney();
  office.config.WriteConfigString("36", "CountryCode", "general", foundation::StoreMachine);
  EXPECT_FALSE(run());
  EXPECT_EQ(currencies.entries.size(), 3u);
}

TEST_F(RedenominationTest, AFaultUndoesEverything) {
  oldMoney();
  office.tariffs = jet::createDatabase(office.folder / "empty.mdb");  // no table `charges`
  EXPECT_THROW(run(), jet::Error);
  EXPECT_EQ(currencies.Default().name, "ROL");
  EXPECT_EQ(number(*office.main, "select Price_Ref from Calls where DialNumber = '1'"), 50000);
  EXPECT_EQ(number(*office.main, "select count(*) from Currency"), 3);
}

}  // namespace
}  // namespace tariff
