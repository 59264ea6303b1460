// What the selects of one recorded call cost, each with literals that were never there before.
//   build/release/bin/jet_bench

#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <filesystem>
#include <stdexcept>

#include "base/printf.h"
#include "schema/schema.h"

namespace {

constexpr int kPrefixes = 30000;
constexpr int kBands = 2000;
constexpr int kBandsPerDestination = 5;
constexpr int kProfiles = 10;
constexpr int kHiddenNumbers = 1000;
constexpr int kContacts = 100000;

std::filesystem::path makeFolder() {
  std::string name = (std::filesystem::temp_directory_path() / "tallybook-bench-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("cannot make " + name);
  return name;
}

// Spreads the numbers 0, 1, 2, ... over 0..999999999, each once.
int spread(std::int64_t i) {
  return static_cast<int>(i * 387420489 % 1000000000);
}

std::string telephone(std::int64_t i) {
  return base::format("0040%09d", spread(i));
}

// A main and a tariff database of a large site.
class Site {
 public:
  Site() {
    jet::Transaction transaction(*main);
    for (int i = 0; i < kHiddenNumbers; ++i) {
      main->execute("insert into FilteredNumbers ([number]) values ('" + telephone(i) + "')");
    }
    for (int i = 0; i < kContacts; ++i) {
      main->execute(base::format(
          "insert into Contacts (RecordID, Name, Contact, Organization, Tel_String, Tel_View, Tel, Address) "
          "values (%d, 'Person %d', 'Person %d', 'Company', '%s %s', '%s', '%s', '1, Long Street')",
          i, i, i, telephone(i), telephone(i + kContacts), telephone(i), telephone(i)));
    }
    transaction.commit();
    addTariffs();
  }
  ~Site() { std::filesystem::remove_all(folder_); }
  Site(const Site&) = delete;
  Site& operator=(const Site&) = delete;

 private:
  std::filesystem::path folder_ = makeFolder();

 public:
  std::unique_ptr<jet::Database> main = schema::createMainDatabase(folder_ / "main.mdb");
  std::unique_ptr<jet::Database> tariffs = schema::createTariffDatabase(folder_ / "tariffs.mdb");

 private:
  void addTariffs() {
    jet::Transaction transaction(*tariffs);
    for (int i = 0; i < kProfiles; ++i) {
      tariffs->execute(
          base::format("insert into profiles (profile_id, profile_name, profile_start_date, provider_id, free_minutes) "
                       "values (%d, 'Profile %d', #1/%d/2020#, 1, 0)",
                       i, i % 5, i + 1));
    }
    for (int i = 0; i < kPrefixes; ++i) {
      tariffs->execute(
          base::format("insert into prefixe (prefix_id, provider_id, destination_id) values ('0040%05d', %d, %d)",
                       i * 3, i % 3 + 1, i % (kBands / kBandsPerDestination)));
    }
    for (int i = 0; i < kBands; ++i) {
      tariffs->execute(base::format(
          "insert into charges (destination_id, profile_id, charge_minimum_digits, charge_start_time, "
          "charge_end_time, charge_days, charge_default_resolution, charge_minimum, charge_value, charge_default, "
          "charge_currency) values (%d, 1, 0, #%d:00#, #%d:59#, 510510, 6000, 0, 0.1, 0, 'EUR')",
          i / kBandsPerDestination, i % kBandsPerDestination * 4, i % kBandsPerDestination * 4 + 3));
    }
    transaction.commit();
  }
};

Site& site() {
  static Site made;
  return made;
}

// Runs the select of each number within a view, as recording a call does, after enough of them for memory to be filled.
template <typename Select>
void run(benchmark::State& state, jet::Database& database, Select select) {
  std::int64_t call = 0;
  std::size_t rows = 0;
  for (; call < 1000; ++call) database.openSnapshot(select(call));
  // Formatting the texts is the caller's work; they are made before.
  std::vector<std::string> texts;
  const jet::ReadView view(database);
  while (state.KeepRunningBatch(10000)) {
    state.PauseTiming();
    texts.clear();
    for (int i = 0; i < 10000; ++i) texts.push_back(select(call++));
    state.ResumeTiming();
    for (const std::string& text : texts) rows += database.openSnapshot(text).rowCount();
  }
  state.counters["rows"] = benchmark::Counter(static_cast<double>(rows), benchmark::Counter::kAvgIterations);
}

void BM_Profile(benchmark::State& state) {
  run(state, *site().tariffs, [](std::int64_t i) {
    return base::format(
        "SELECT TOP 1 * FROM profiles WHERE profile_name = '%s' and profile_start_date <= #%d/%d/%d# and "
        "provider_id = %d order by profile_start_date desc",
        base::format("Profile %d", i % 5), i % 12 + 1, i / 12 % 28 + 1, 2021 + i / 336 % 5000, 1);
  });
}
BENCHMARK(BM_Profile);

void BM_Destination(benchmark::State& state) {
  run(state, *site().tariffs, [](std::int64_t i) {
    return base::format(
        "select destination_id from prefixe where provider_id=%d and '%s' like prefix_id+'*' order by prefix_id desc",
        1, telephone(i));
  });
}
BENCHMARK(BM_Destination);

void BM_DestinationOfOwnNumber(benchmark::State& state) {
  run(state, *site().tariffs, [](std::int64_t i) {
    return base::format(
        "select destination_id from prefixe where prefix_id <> '' and provider_id=%d and '%s' like prefix_id+'*' "
        "order by prefix_id desc",
        2, telephone(i).substr(4));
  });
}
BENCHMARK(BM_DestinationOfOwnNumber);

void BM_Charges(benchmark::State& state) {
  run(state, *site().tariffs, [](std::int64_t i) {
    return base::format(
        "select * from charges where destination_id = %d and profile_id = %d and "
        "( ( (charge_days mod %d = 0)  and charge_start_time <= #%d:%d#)) and charge_minimum_digits <= %d",
        i % (kBands / kBandsPerDestination), 1, 17, i % 24, i / 24 % 60, i / 1440 + 1);
  });
}
BENCHMARK(BM_Charges);

void BM_HiddenNumber(benchmark::State& state) {
  jet::Database& main = *site().main;
  std::int64_t call = 0;
  std::size_t found = 0;
  const jet::ReadView view(main);
  for (auto _ : state) {
    const std::string criteria = base::format("n=\"%s \"", telephone(++call));
    found += main.openSnapshot("select [number] & ' ' as n from FilteredNumbers").findFirst(criteria) ? 1 : 0;
  }
  benchmark::DoNotOptimize(found);
}
BENCHMARK(BM_HiddenNumber);

std::string contactQuery(const std::string& number) {
  return base::format("SELECT * FROM %s WHERE %s LIKE \"*%s*\"", "Contacts", "Tel_String", number);
}

void BM_ContactOfAStranger(benchmark::State& state) {
  run(state, *site().main, [](std::int64_t i) { return contactQuery(telephone(i + 300000)); });
}
BENCHMARK(BM_ContactOfAStranger);

void BM_ContactFound(benchmark::State& state) {
  run(state, *site().main, [](std::int64_t i) { return contactQuery(telephone(i * 7 % 200000)); });
}
BENCHMARK(BM_ContactFound)->Iterations(100000);

void BM_IndexAfterAChangedContact(benchmark::State& state) {
  jet::Database& main = *site().main;
  std::int64_t call = 0;
  for (auto _ : state) {
    state.PauseTiming();
    for (int i = 0; i < 30; ++i) main.openSnapshot(contactQuery(telephone(++call + 300000)));
    main.execute("update Contacts set [Note] = 'x' where RecordID = 1");
    state.ResumeTiming();
    main.openSnapshot(contactQuery(telephone(++call + 300000)));
  }
}
BENCHMARK(BM_IndexAfterAChangedContact)->Iterations(5)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
