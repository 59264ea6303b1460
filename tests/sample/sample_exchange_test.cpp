#include "sample/sample_exchange.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <set>

#include "foundation/change_tags.h"
#include "foundation/language_file.h"
#include "ingest/phonebook.h"
#include "platform/clock.h"
#include "sample/company.h"
#include "sample/directory.h"
#include "sample/romania.h"
#include "sample/tariff_plan.h"
#include "sample/world.h"
#include "schema/schema.h"
#include "security/audit_log.h"
#include "support/database_folder.h"
#include "tariff/price.h"

namespace sample {
namespace {

// The sample exchange in a temporary folder, opened as the program would.
class SampleExchange : public ::testing::Test {
 protected:
  SampleExchange()
      : machine(folder / "machine.ini"),
        config(machine),
        tags(person),
        log(config, clock, [] { return std::string(); }),
        parties(config) {
    main = schema::createMainDatabase(folder / schema::kMainFile);
    tags.LoadTouch(*main);
    config.OpenConfig(*main, tags);
    log.OpenLog(*main);
    fillMain(*main, config);
    auto tariffDatabase = schema::createTariffDatabase(folder / schema::kTariffFile);
    fillTariffs(*tariffDatabase);
    tariffs = std::make_unique<tariff::TariffDatabase>(std::move(tariffDatabase));
    fillPhonebook(*schema::createPhonebookDatabase(folder / schema::kPhonebookFile));
    parties.load(*main, &tariffs->database());
  }
  ~SampleExchange() override {
    log.CloseLog();
    config.CloseConfig();
    tags.CloseTouch();
  }

  struct Priced {
    tariff::PriceOutcome outcome;
    double price;
    std::string currency;
  };
  // 95 seconds on a Tuesday morning.
  Priced price(const std::string& number, int trunk, int pulses = 0) {
    tariff::PriceCalculator prices(config, parties, tariffs.get(), log, language, person);
    exchange::CallRecord record;
    record.year = 2026;
    record.month = 11;
    record.day = 24;
    record.hour = 10;
    record.trunk = trunk;
    record.dialledNumber = number;
    record.pulses = pulses;
    record.setDuration(95);
    tariff::PricingContext output;
    std::int32_t ignored = 0;
    const auto outcome = prices.CalcPrice(record, output, ignored);
    return {outcome, output.price, output.currency};
  }

  support::DatabaseFolder folder;
  platform::NoOperator person;
  platform::SystemClock clock;
  foundation::MachineStore machine;
  foundation::ConfigManager config;
  foundation::ChangeTags tags;
  foundation::LanguageFile language;
  security::AuditLog log;
  std::unique_ptr<jet::Database> main;
  std::unique_ptr<tariff::TariffDatabase> tariffs;
  exchange::PartyDefinitions parties;
};

TEST_F(SampleExchange, DefinitionsAreReadBackAsTheyWereMade) {
  EXPECT_EQ(parties.extensions.size(), 60U);
  EXPECT_EQ(parties.departmentOfExtension("210"), "Vânzări");
  EXPECT_EQ(parties.clients.size(), clients().size());
  EXPECT_EQ(parties.findClient("1001")->name, "Primăria Sectorului 7");
  EXPECT_EQ(parties.findClient("1042")->name, "Construct Mureș SA");
  EXPECT_EQ(parties.departmentOfAccount("1042"), "Producție");
  ASSERT_EQ(parties.providers.size(), 3U);
  EXPECT_EQ(parties.findProvider(2)->freeSeconds, 3);
  ASSERT_NE(parties.findTrunk("8"), nullptr);
  EXPECT_EQ(parties.findTrunk("8")->ignoreZeroPulses, 1);
  EXPECT_EQ(parties.findTrunk("8")->profile, "Impulsuri");
  EXPECT_EQ(parties.countryCode, kCountryCode);
  EXPECT_EQ(tariffs->dayEncoding(), tariff::DayEncoding::Product);
}

TEST_F(SampleExchange, NumbersAreFoundInTheirAreaAndCountryHoweverTheyAreDialled) {
  struct Case {
    const char* dialled;
    const char* area;
    const char* country;
  };
  for (const Case& c : {Case{"0264123456", "Cluj", "România"}, Case{"0040264123456", "Cluj", "România"},
                        Case{"3123456", "București", "România"}, Case{"0213123456", "București", "România"},
                        Case{"0722123456", "Mobil 072", "România"}, Case{"112", "Urgențe", "România"},
                        Case{"00493012345", "Berlin", "Germania"}, Case{"0049555123", "Germania", "Germania"},
                        Case{"0012425551234", "Bahamas", "Bahamas"}, Case{"0077271234", "Kazahstan", "Kazahstan"}}) {
    const exchange::PREFIX* prefix = parties.findPrefix(normalised(c.dialled));
    ASSERT_NE(prefix, nullptr) << c.dialled;
    EXPECT_EQ(prefix->name, c.area) << c.dialled;
    EXPECT_EQ(prefix->country, c.country) << c.dialled;
  }
}

TEST_F(SampleExchange, EveryKindOfDestinationHasAPriceOnEveryTrunk) {
  for (const Trunk& trunk : trunks()) {
    for (const char* number : {"3123456", "0213123456", "0264123456", "0722123456", "0800123456", "0900123456", "112",
                               "911", "00493012345", "0041441234567", "0012125551234", "0081312345678", "0088112345"}) {
      EXPECT_EQ(price(number, trunk.number, 2).outcome, tariff::PriceOutcome::Priced)
          << number << " on " << trunk.number;
    }
  }
}

TEST_F(SampleExchange, CallsCostWhatThePlansSay) {
  // One minute as the minimum and one more begun, at 0.16 a minute.
  EXPECT_NEAR(price("0264123456", 1).price, 0.32, 1e-9);
  EXPECT_EQ(price("0264123456", 1).currency, "RON");
  // 92 seconds after three free ones, each 0.14/60, and 0.02 for the connection.
  EXPECT_NEAR(price("0722123456", 5).price, 92 * 0.14 / 60 + 0.02, 1e-9);
  EXPECT_NEAR(price("0264123456", 7, 6).price, 0.54, 1e-9);
  EXPECT_EQ(price("00493012345", 1).currency, "EUR");
  EXPECT_EQ(price("00493012345", 5).currency, "USD");
  EXPECT_EQ(price("112", 1).price, 0);
  EXPECT_EQ(price("0264123456", 8).outcome, tariff::PriceOutcome::NoPulses);
}

TEST_F(SampleExchange, ThePhonebookNamesItsSubscribersHoweverTheyAreDialled) {
  const auto phonebook = ingest::Phonebook::open(folder.setting());
  for (const PhonebookTable& table : phonebookTables()) {
    const Subscriber person = subscriber(table, 5);
    const std::string name = person.lastName + " " + person.firstName;
    const std::string number = std::string(table.areaCode) + std::to_string(person.number);
    EXPECT_EQ(phonebook->nameOf(normalised("0" + number)), name) << table.name;
    EXPECT_EQ(phonebook->nameOf(normalised("0040" + number)), name) << table.name;
  }
}

TEST(SampleData, PrefixesAndNumbersAreUnique) {
  std::set<std::string_view> codes;
  for (const Country& country : countries()) EXPECT_TRUE(codes.insert(country.code).second) << country.code;
  EXPECT_GT(codes.size(), 230U);
  std::set<std::string_view> names;
  for (const Country& country : countries()) names.insert(country.name);
  for (const City& city : cities()) {
    EXPECT_TRUE(codes.insert(city.prefix).second) << city.prefix;
    EXPECT_TRUE(names.contains(city.country)) << city.country;
  }
  std::set<std::string> numbers;
  for (int i = 0; i < kContacts; ++i) EXPECT_TRUE(numbers.insert(contactNumber(i)).second) << contactNumber(i);
  int share = 0;
  for (const Trunk& trunk : trunks()) share += trunk.share;
  EXPECT_EQ(share, 100);
}

}  // namespace
}  // namespace sample
