#pragma once

#include <cstdint>
#include <fstream>
#include <memory>
#include <string>

#include "base/printf.h"
#include "exchange/call_record.h"
#include "exchange/party_definitions.h"
#include "ingest/exchange_parts.h"
#include "ingest/output_port.h"
#include "ingest/recorder.h"
#include "security/audit_log.h"
#include "support/test_office.h"
#include "tariff/currencies.h"
#include "tariff/price.h"

namespace support {

// The files of a small exchange in a folder of its own:
// - trunk 5 of provider 1 "Telco", profile "Normal": calls to Bucharest (area code 21) cost 0.10 EUR a minute, each
//   begun minute whole, at all hours; 1 EUR is 5 RON, the default currency;
// - extension 201 of "Sales", account 12?? of "Projects", client "Ana" of account 1234;
// - contact "Maria" 9999999 and phonebook subscriber "Pop Ion" 3456789, both in Bucharest;
// - the monitor writes to the folder "monitor".
class ExchangeFiles {
 public:
  ExchangeFiles() {
    std::filesystem::create_directory(folder / "monitor");
    foundation::MachineStore machine(folder / "machine.ini");
    machine.writeString("general", "PathMonitor", (folder / "monitor").string());
    machine.writeString("general", "CountryCode", "40");
    machine.writeString("general", "AreaCode", "21");
    fillMain(*schema::createMainDatabase(folder / schema::kMainFile));
    fillTariffs(*schema::createTariffDatabase(folder / schema::kTariffFile));
    fillPhonebook(*schema::createPhonebookDatabase(folder / schema::kPhonebookFile));
  }

  [[nodiscard]] std::filesystem::path monitorFile(const char* name = "monitor.data") const {
    return folder / (std::string("monitor/") + name);
  }
  void writeMonitorFile(const std::string& bytes, const char* name = "monitor.data") const {
    std::ofstream(monitorFile(name), std::ios::binary) << bytes;
  }

  // The definitions and parties, into a main database without any.
  static void fillMain(jet::Database& main) {
    setting(main, "Calls\\LiniiCount", 1);
    setting(main, "Tariffs\\Trunks\\LiniiDef0", "L5;1;5;Normal;0;0");
    setting(main, "Calls\\ExtCount", 1);
    setting(main, "Tariffs\\Extensions\\ExtDef0", "201;Desk;Sales");
    setting(main, "Calls\\ConturiCount", 1);
    setting(main, "Tariffs\\Accounts\\ConturiDef0", "12??;Project;Projects");
    main.execute("insert into Clients (Name, Account, Folder) values ('Ana', '1234', 'A')");
    main.execute("insert into Currency (CurrencyID, Name, Ratio, [Default], Reverse) values (2, 'EUR', 5, 0, 0)");
    main.execute("insert into Contacts (RecordID, Contact, Tel_String) values (1, 'Maria', '0040219999999')");
  }

  DatabaseFolder folder;

 private:
  static void setting(jet::Database& main, const char* path, const char* text) {
    main.execute(base::format("insert into Config (Path, String_Value) values ('%s', '%s')", path, text));
  }
  static void setting(jet::Database& main, const char* path, int value) {
    main.execute(base::format("insert into Config (Path, Int_Value) values ('%s', %d)", path, value));
  }
  static void fillTariffs(jet::Database& tariffs) {
    tariffs.execute("insert into providers (provider_id, provider_name) values (1, 'Telco')");
    tariffs.execute(
        "insert into profiles (profile_id, profile_name, profile_start_date, provider_id, free_minutes) "
        "values (1, 'Normal', #1/1/2020#, 1, 0)");
    tariffs.execute("insert into prefixe (prefix_id, provider_id, destination_id) values ('004021', 1, 1)");
    tariffs.execute(
        "insert into prefixes2 (prefix_id, prefix_name, prefix_ctry) values ('004021', 'Bucharest', 'Romania')");
    // 510510 is the product of the primes of all seven days.
    tariffs.execute(
        "insert into charges (destination_id, profile_id, charge_minimum_digits, charge_start_time, charge_end_time, "
        "charge_days, charge_default_resolution, charge_minimum, charge_value, charge_default, charge_currency) "
        "values (1, 1, 0, #0:00#, #23:59#, 510510, 6000, 0, 0.10, 0, 'EUR')");
  }
  static void fillPhonebook(jet::Database& phonebook) {
    phonebook.createTable(schema::phonebookTable("Bucharest"));
    phonebook.execute("insert into map (Prefix, Name, [Table]) values ('004021', 'Bucharest', 'Bucharest')");
    phonebook.execute("insert into Bucharest (Lastname, Firstname, Tel) values ('Pop', 'Ion', 3456789)");
  }
};

// The operator of a test: keeps what was shown, and answers by script.
class ScriptedOperator : public ListeningOperator {
 public:
  bool askYesNo(std::string_view text, Unattended) override {
    questions.emplace_back(text);
    return answer;
  }
  void progressBegin(std::string_view, std::string_view, std::int64_t range) override { ranges.push_back(range); }
  bool progressStep(std::int64_t position) override {
    steps.push_back(position);
    return position < stopAt;
  }
  void progressEnd() override { ++windowsClosed; }

  bool answer = true;
  std::int64_t stopAt = INT64_MAX;
  std::vector<std::string> questions;
  std::vector<std::int64_t> ranges;
  std::vector<std::int64_t> steps;
  std::size_t windowsClosed = 0;
};

// One copy of the system with an exchange's files open; several may run on the same files.
class RunningCopy {
 public:
  explicit RunningCopy(const ExchangeFiles& files)
      : machine(files.folder / "machine.ini"),
        main(jet::openDatabase(files.folder / schema::kMainFile, jet::OpenMode::ReadWrite)),
        tariffs(jet::openDatabase(files.folder / schema::kTariffFile, jet::OpenMode::ReadWrite)),
        phonebook(jet::openDatabase(files.folder / schema::kPhonebookFile, jet::OpenMode::ReadOnly)) {
    tags.LoadTouch(*main);
    config.OpenConfig(*main, tags);
    currencies.load(*main);
    log.OpenLog(*main);
    parties.load(*main, &tariffs.database());
    output.Open();
    recorder.open();
  }

  // One value: the first column of the first row.
  std::string value(const std::string& sql) {
    const jet::Snapshot rows = main->openSnapshot(sql);
    return rows.empty() ? "no row" : rows.at(0, 0).toText();
  }
  std::int64_t callCount() { return main->openSnapshot("select count(*) as c from Calls").at(0, 0).toLong(); }
  // Texts of the audit log, one a line.
  std::string logged() {
    std::string lines;
    const jet::Snapshot rows = main->openSnapshot("SELECT * FROM Log");
    for (std::size_t row = 0; row < rows.rowCount(); ++row) {
      lines += rows.at(row, "Level").toText() + " " + rows.at(row, "Desc").toText() + "\n";
    }
    return lines;
  }

  ScriptedOperator person;
  StoppedClock clock;
  foundation::LanguageFile language;
  foundation::MachineStore machine;
  std::unique_ptr<jet::Database> main;
  tariff::TariffDatabase tariffs;
  ingest::Phonebook phonebook;
  foundation::ChangeTags tags{person};
  foundation::ConfigManager config{machine};
  security::AuditLog log{config, clock, [] { return std::string("Maria"); }};
  exchange::PartyDefinitions parties{config};
  tariff::Currencies currencies{config, language, person};
  tariff::PriceCalculator prices{config, parties, &tariffs, log, language, person};
  ingest::OutputPort output{config, log};
  ingest::ExchangeParts parts{*main,  &tariffs, &phonebook, parties,  prices, currencies,
                              config, tags,     log,        language, person, &output};
  ingest::Recorder recorder{parts};
};

// An outgoing call of 61 seconds (two units) on trunk 5 from extension 201, on Monday 4 March 2024 at 10:20:30.
inline exchange::CallRecord sampleCall(const std::string& number = "3456789") {
  exchange::CallRecord call;
  call.year = 2024;
  call.month = 3;
  call.day = 4;
  call.hour = 10;
  call.minute = 20;
  call.second = 30;
  call.extension = 201;
  call.trunk = 5;
  call.extensionText = "201";
  call.trunkText = "5";
  call.dialledNumber = number;
  call.setDuration(61);
  return call;
}

// `count` such calls as the monitor writes them; the pulses number them from `first`.
inline std::string sampleRecords(int count, int first = 0, bool extended = false) {
  std::string bytes;
  exchange::CallRecord call = sampleCall();
  for (int i = 0; i < count; ++i) {
    call.pulses = first + i;
    bytes += exchange::encodeRecord(call, extended, 1252);
  }
  return bytes;
}

}  // namespace support
