// What one price costs, against a tariff database of the size that a large site has: 30,000 prefixes, 2,000 bands.

#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <filesystem>
#include <stdexcept>

#include "base/printf.h"
#include "schema/schema.h"
#include "tariff/dialled_number.h"
#include "tariff/price.h"

namespace {

constexpr int kPrefixes = 30000;
constexpr int kDestinations = 500;
constexpr int kBandsPerDestination = 4;

std::filesystem::path makeFolder() {
  std::string name = (std::filesystem::temp_directory_path() / "tallybook-bench-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("cannot make " + name);
  return name;
}

std::unique_ptr<jet::Database> makeTariffs(const std::filesystem::path& file) {
  auto database = schema::createTariffDatabase(file);
  jet::Transaction transaction(*database);
  database->execute("insert into providers (provider_id, provider_name) values (1, 'Telco')");
  database->execute(
      "insert into profiles (profile_id, profile_name, profile_start_date, provider_id, free_minutes) "
      "values (1, 'Normal', #1/1/2020#, 1, 0)");
  for (int i = 0; i < kPrefixes; ++i) {
    database->execute(
        base::format("insert into prefixe (prefix_id, provider_id, destination_id) values ('00%05d', 1, %d)",
                     10000 + i * 3, i % kDestinations));
    database->execute(base::format(
        "insert into prefixes2 (prefix_id, prefix_name, prefix_ctry) values ('00%05d', 'Area %d', 'Country')",
        10000 + i * 3, i));
  }
  for (int i = 0; i < kDestinations * kBandsPerDestination; ++i) {
    const int band = i / kDestinations;
    database->execute(base::format(
        "insert into charges (destination_id, profile_id, charge_minimum_digits, charge_start_time, charge_end_time, "
        "charge_days, charge_default_resolution, charge_minimum, charge_value, charge_default, charge_currency) "
        "values (%d, 1, 0, #%d:00#, #%d:59#, 510510, 6000, 0, 0.1, 0, 'EUR')",
        i % kDestinations, band * 6, band * 6 + 5));
  }
  transaction.commit();
  return database;
}

struct Site {
  Site() {
    tags.LoadTouch(*main);
    config.OpenConfig(*main, tags);
    log.OpenLog(*main);
    parties.load(*main, &tariffs.database());
    parties.countryCode = "40";
    parties.areaCode = "21";
    parties.trunks[4] = {.label = "L5", .trunk = "5", .providerId = 1, .profile = "Normal"};
    parties.reindex();
  }
  ~Site() { std::filesystem::remove_all(folder); }
  Site(const Site&) = delete;
  Site& operator=(const Site&) = delete;

  std::filesystem::path folder = makeFolder();
  std::unique_ptr<jet::Database> main = schema::createMainDatabase(folder / schema::kMainFile);
  tariff::TariffDatabase tariffs{makeTariffs(folder / schema::kTariffFile)};
  platform::NoOperator person;
  platform::SystemClock clock;
  foundation::LanguageFile language;
  foundation::MachineStore machine{folder / "machine.ini"};
  foundation::ChangeTags tags{person};
  foundation::ConfigManager config{machine};
  security::AuditLog log{config, clock, [] { return std::string(); }};
  exchange::PartyDefinitions parties{config};
  tariff::PriceCalculator prices{config, parties, &tariffs, log, language, person};
};

exchange::CallRecord callOf(std::int64_t number) {
  exchange::CallRecord record;
  record.year = 2024;
  record.month = 3;
  record.day = 1 + static_cast<std::int32_t>(number % 28);
  record.hour = static_cast<std::int32_t>(number % 24);
  record.trunk = 5;
  record.dialledNumber = base::format("00%05d4567", 10000 + number * 7919 % kPrefixes * 3);
  record.setDuration(30 + number % 600);
  return record;
}

void BM_CalcPrice(benchmark::State& state) {
  Site site;
  tariff::PricingContext output;
  std::int32_t ignore = 0;
  std::int64_t number = 0;
  for (auto _ : state) {
    exchange::CallRecord record = callOf(number++);
    if (site.prices.CalcPrice(record, output, ignore) != tariff::PriceOutcome::Priced) {
      state.SkipWithError("a call was not priced");
      break;
    }
    benchmark::DoNotOptimize(output.price);
  }
}
BENCHMARK(BM_CalcPrice)->Unit(benchmark::kMicrosecond);

void BM_FindPrefix(benchmark::State& state) {
  Site site;
  std::int64_t number = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(site.parties.findPrefix(callOf(number++).dialledNumber));
  }
}
BENCHMARK(BM_FindPrefix)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
