// How fast and in how much memory the monitor's file is imported: priced and enriched against the reference data of a
// large site, beside a bare INSERT of the same rows into the same schema: into files, or on a server, where the bare
// one is pipelined; then how long records take that come one by one. Usage: import_bench [RECORDS] [--postgres ADDRESS]
//
// The last line: ratio R import N/s insert N/s rss M MiB

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <memory>
#include <string>

#include "bare_insert.h"
#include "base/printf.h"
#include "data_folder.h"
#include "exchange/party_definitions.h"
#include "foundation/change_tags.h"
#include "foundation/language_file.h"
#include "ingest/import.h"
#include "ingest/live_recorder.h"
#include "ingest/phonebook.h"
#include "ingest/recorder.h"
#include "platform/clock.h"
#include "postgres_place.h"
#include "sample/call_generator.h"
#include "sample/random.h"
#include "sample/row_writer.h"
#include "sample/sample_exchange.h"
#include "sample/tariff_plan.h"
#include "schema/schema.h"
#include "security/audit_log.h"
#include "tariff/price.h"

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr int kPrefixes = 30'000;
constexpr int kChargeBands = 2'000;
constexpr int kExtensions = 300;
constexpr int kContacts = 100'000;
constexpr int kFilteredNumbers = 1'000;
constexpr std::int64_t kRowsPerBatch = 1'000;
constexpr int kLiveRecords = 2'000;
const base::DateTime kLastDay = *base::DateTime::fromParts(2026, 11, 20);

double secondsSince(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

std::int64_t rowsOf(jet::Database& database, const char* table) {
  return database.openSnapshot(base::format("SELECT Count(*) AS n FROM [%s]", table)).at(0, 0U).toLong();
}

// The sample's tariffs, with more prefixes (blocks of numbers below a country) and more bands (of destinations that
// only those blocks lead to).
void growTariffs(jet::Database& tariffs) {
  sample::fillTariffs(tariffs);
  jet::Transaction transaction(tariffs);
  sample::Random random(11);
  {
    sample::RowWriter prefixes(tariffs, "prefixe", {"prefix_id", "provider_id", "destination_id"});
    for (std::int64_t i = rowsOf(tariffs, "prefixe"); i < kPrefixes; ++i) {
      prefixes.add(
          {base::format("00%d", 10'000 + random.below(900'000)), 1 + static_cast<int>(i % 3), 6 + random.below(5)});
    }
    sample::RowWriter areas(tariffs, "prefixes2", {"prefix_id", "prefix_name", "prefix_ctry"});
    for (std::int64_t i = rowsOf(tariffs, "prefixes2"); i < kPrefixes; ++i) {
      const int block = 10'000 + random.below(900'000);
      areas.add({base::format("00%d", block), base::format("Zona %d", block), base::format("Tara %d", block / 1000)});
    }
    sample::RowWriter charges(tariffs, "charges",
                              {"destination_id", "profile_id", "charge_minimum_digits", "charge_start_time",
                               "charge_end_time", "charge_days", "charge_default_resolution", "charge_minimum",
                               "charge_value", "charge_default", "charge_pulse_value", "charge_currency"});
    for (std::int64_t i = rowsOf(tariffs, "charges"); i < kChargeBands; ++i) {
      charges.add({100 + static_cast<int>(i / 4), 1 + static_cast<int>(i % 5), 0, base::DateTime(0),
                   base::DateTime(86'340), 510'510, 6'000, 0, 0.25, 0.0, 0.0, "RON"});
    }
  }
  transaction.commit();
}

void growMain(jet::Database& main, foundation::ConfigManager& config) {
  sample::fillMain(main, config);
  jet::Transaction transaction(main);
  sample::Random random(12);
  exchange::PartyDefinitions parties(config);
  parties.load(main, nullptr);
  for (int i = static_cast<int>(parties.extensions.size()); i < kExtensions; ++i) {
    const std::string extension = std::to_string(1000 + i);
    parties.extensions.push_back({extension, "Birou " + extension, "Etaj " + std::to_string(i / 20)});
  }
  parties.save(main);
  {
    sample::RowWriter contacts(main, "Contacts", {"RecordID", "Name", "Contact", "Tel_View", "Tel_String", "Tel"});
    for (auto i = static_cast<int>(rowsOf(main, "Contacts")) + 1; i <= kContacts; ++i) {
      const std::string number = base::format("004021%010d", random.below64(10'000'000'000));
      const std::string name = base::format("Abonat %d", i);
      contacts.add({i, name, name, number, number, number});
    }
    sample::RowWriter hidden(main, "FilteredNumbers", {"number"});
    for (std::int64_t i = rowsOf(main, "FilteredNumbers"); i < kFilteredNumbers; ++i) {
      hidden.add({base::format("07%08d", random.below(100'000'000))});
    }
  }
  transaction.commit();
}

void writeMonitorFile(const fs::path& file, std::int64_t records) {
  std::ofstream out(file, std::ios::binary);
  sample::CallGenerator generator({.count = records, .lastDay = kLastDay, .days = 365, .seed = 5});
  for (std::int64_t i = 0; i < records; ++i) {
    const std::string record = generator.next();
    out.write(record.data(), static_cast<std::streamsize>(record.size()));
  }
}

// The objects of the document, as the program has them while it imports.
class Document {
 public:
  // `prefix` comes before the names of the databases.
  Document(const fs::path& folder, std::string prefix) : prefix_(std::move(prefix)), machine_(folder / "machine.ini") {
    config_.WriteConfigString((folder / "monitor" / "").string(), "PathMonitor", "general", foundation::StoreMachine);
    config_.WriteConfigString(prefix_, "PathDatabase", "general", foundation::StoreMachine);
  }

  void make() {
    main_ = schema::createMainDatabase(prefix_ + schema::kMainFile);
    open();
    growMain(*main_, config_);
    growTariffs(*schema::createTariffDatabase(prefix_ + schema::kTariffFile));
    sample::fillPhonebook(*schema::createPhonebookDatabase(prefix_ + schema::kPhonebookFile));
    close();
  }

  void openExisting() {
    main_ = jet::openDatabase(prefix_ + schema::kMainFile, jet::OpenMode::ReadWrite);
    open();
  }

  void close() {
    log_.CloseLog();
    config_.CloseConfig();
    tags_.CloseTouch();
    main_.reset();
  }

  ingest::ImportResult import() {
    ingest::ImportResult result;
    withRecorder([&](ingest::Recorder& recorder) {
      ingest::ImportOptions options;
      options.recordsPerBatch = kRowsPerBatch;
      ingest::MonitorImport import(recorder, options);
      result = import.run();
    });
    return result;
  }

  // Milliseconds from each record to its stored row, as they come one by one, in ascending order.
  std::vector<double> recordLive(int records) {
    std::vector<double> times;
    withRecorder([&](ingest::Recorder& recorder) {
      ingest::LiveRecorder live(recorder);
      sample::CallGenerator generator({.count = records, .lastDay = kLastDay, .days = 1, .seed = 6});
      for (int i = 0; i < records; ++i) {
        const std::string record = generator.next();
        const auto start = Clock::now();
        if (live.record({reinterpret_cast<const unsigned char*>(record.data()), record.size()}) != 1) {
          throw std::runtime_error("a record is refused: " + live.refusal());
        }
        times.push_back(secondsSince(start) * 1000);
      }
    });
    std::ranges::sort(times);
    return times;
  }

 private:
  void withRecorder(const std::function<void(ingest::Recorder&)>& work) {
    const auto tariffs = tariff::TariffDatabase::open(prefix_);
    const auto phonebook = ingest::Phonebook::open(prefix_);
    exchange::PartyDefinitions parties(config_);
    parties.load(*main_, &tariffs->database());
    tariff::Currencies currencies(config_, language_, person_);
    currencies.load(*main_);
    tariff::PriceCalculator prices(config_, parties, tariffs.get(), log_, language_, person_);
    ingest::Recorder recorder({*main_, tariffs.get(), phonebook.get(), parties, prices, currencies, config_, tags_,
                               log_, language_, person_, nullptr});
    recorder.open();
    work(recorder);
    recorder.close();
  }

  void open() {
    tags_.LoadTouch(*main_);
    config_.OpenConfig(*main_, tags_);
    log_.OpenLog(*main_);
  }

  std::string prefix_;
  platform::NoOperator person_;
  platform::SystemClock clock_;
  foundation::MachineStore machine_;
  foundation::ConfigManager config_{machine_};
  foundation::ChangeTags tags_{person_};
  foundation::LanguageFile language_;
  security::AuditLog log_{config_, clock_, [] { return std::string(); }};
  std::unique_ptr<jet::Database> main_;
};

// Largest resident size of this process so far, in KiB.
long peakMemory() {
  std::ifstream status("/proc/self/status");
  std::string word;
  while (status >> word) {
    if (word == "VmHWM:") {
      long kilobytes = 0;
      status >> kilobytes;
      return kilobytes;
    }
  }
  return 0;
}

// In a process of its own, whose memory is not counted.
bool makeData(const fs::path& folder, const std::string& prefix, std::int64_t records) {
  const pid_t child = fork();
  if (child == 0) {
    int status = 0;
    try {
      Document(folder, prefix).make();
      writeMonitorFile(folder / "monitor" / "monitor.data", records);
    } catch (const std::exception& error) {
      std::cerr << error.what() << std::endl;
      status = 1;
    }
    _exit(status);
  }
  int status = 1;
  return child > 0 && waitpid(child, &status, 0) == child && status == 0;
}

}  // namespace

int main(int count, char** words) {
  const std::optional<std::string> address = bench::takeAddress(count, words);
  const std::int64_t records = count > 1 ? std::atoll(words[1]) : 1'000'000;
  if (records < 1) {
    std::cerr << "Usage: import_bench [RECORDS] [--postgres ADDRESS]\n";
    return 2;
  }
  const bench::DataFolder folder("import_bench");
  fs::create_directories(folder.path() / "monitor");
  std::optional<bench::ServerPlace> server;
  if (address) server.emplace(*address);
  const std::string prefix = server ? server->prefix() : (folder.path() / "").string();
  if (!makeData(folder.path(), prefix, records)) return 1;
  std::cout << "reference data and " << records << " records made" << std::endl;

  Document document(folder.path(), prefix);
  document.openExisting();
  const auto start = Clock::now();
  const double startOfProcessor = bench::processorTime();
  const ingest::ImportResult result = document.import();
  const double importSeconds = secondsSince(start);
  const double processorSeconds = (bench::processorTime() - startOfProcessor) / 1000;
  const long peak = peakMemory();
  const std::vector<double> live = document.recordLive(kLiveRecords);
  document.close();
  if (result.imported != records) {
    std::cerr << "imported " << result.imported << " of " << records << ": " << result.message << '\n';
    return 1;
  }
  const bench::BareInsert bare =
      server ? bench::insertBareOnServer(*server, schema::kMainFile, "Calls", kRowsPerBatch)
             : bench::insertBare(folder.path() / schema::kMainFile, folder.path() / "bare.db", "Calls", kRowsPerBatch);
  std::cout << base::format(
                   "a live record to its stored row: median %.2f ms, 99th percentile %.2f ms, longest %.1f ms\n",
                   live[live.size() / 2], live[live.size() * 99 / 100], live.back())
            << base::format("import %.1f s, bare insert %.1f s for %d rows\n", importSeconds, bare.seconds, bare.rows);
  // A server's processor time is not this program's.
  if (!server) {
    std::cout << base::format("of the processor: import %.2f s, bare insert %.2f s, ratio %.2f\n", processorSeconds,
                              bare.processorSeconds, processorSeconds / bare.processorSeconds);
  }
  std::cout << base::format(
                   "ratio %.2f import %.0f/s insert %.0f/s rss %d MiB",
                   (importSeconds / static_cast<double>(records)) / (bare.seconds / static_cast<double>(bare.rows)),
                   static_cast<double>(records) / importSeconds, static_cast<double>(bare.rows) / bare.seconds,
                   (peak + 1023) / 1024)
            << std::endl;
  return 0;
}
