#pragma once

#include <memory>
#include <string>

#include "base/printf.h"
#include "exchange/call_record.h"
#include "exchange/party_definitions.h"
#include "security/audit_log.h"
#include "support/test_office.h"
#include "tariff/price.h"

namespace tariff {

// A row of `charges` of destination 1 and profile 1: Mondays from 0:00 to 23:59, a minute at 0.10 EUR.
struct Charge {
  int destination = 1;
  int profile = 1;
  int digits = 0;  // least length of the number
  const char* from = "0:00";
  const char* to = "23:59";
  int days = 1;
  int unit = 6000;  // hundredths of a second
  int minimum = 0;
  double value = 0.10;
  double fixedAmount = 0;
  const char* currency = "EUR";
};

struct PricedCall {
  PriceOutcome outcome = PriceOutcome::Priced;
  PricingContext output;
  std::int32_t ignore = -1;
  exchange::CallRecord record;  // as the calculation left it
};

// An exchange with its tariffs in a few lines: provider 1 "Telco", trunk 5 on it with profile "Normal", which is
// profile 1, valid from 2020. Prefixes and charges are each test's own. 4 March 2024 is a Monday.
class TestExchange {
 public:
  TestExchange() {
    provider(1, "Telco");
    profile(1, "'Normal'", "1/1/2020");
    trunk({.label = "L5", .trunk = "5", .providerId = 1, .profile = "Normal"});
  }

  void provider(int id, const std::string& name, const std::string& localPrefixes = "", int freeSeconds = 0) {
    parties.providers.push_back(
        {.id = id, .name = name, .localPrefixes = localPrefixes, .nationalPrefix = "", .freeSeconds = freeSeconds});
  }
  void trunk(exchange::tagTRUNKINFO entry) {
    parties.trunks.push_back(std::move(entry));
    parties.reindex();
  }
  // `name` is a literal of the dialect: quoted, or null.
  void profile(int id, const std::string& name, const std::string& since, int providerId = 1, int freeMinutes = 0) {
    run("insert into profiles (profile_id, profile_name, profile_start_date, provider_id, free_minutes) "
        "values (%d, %s, #%s#, %d, %d)",
        id, name, since, providerId, freeMinutes);
  }
  void prefix(const std::string& prefix, int destination, int providerId = 1) {
    run("insert into prefixe (prefix_id, provider_id, destination_id) values ('%s', %d, %d)", prefix, providerId,
        destination);
  }
  void charge(const Charge& row) {
    run("insert into charges (destination_id, profile_id, charge_minimum_digits, charge_start_time, charge_end_time, "
        "charge_days, charge_default_resolution, charge_minimum, charge_value, charge_default, charge_currency) "
        "values (%d, %d, %d, #%s#, #%s#, %d, %d, %d, %f, %f, '%s')",
        row.destination, row.profile, row.digits, row.from, row.to, row.days, row.unit, row.minimum, row.value,
        row.fixedAmount, row.currency);
    tariffs->detectDayEncoding();
  }
  template <typename... Arguments>
  void run(const char* format, const Arguments&... arguments) {
    tariffs->database().execute(base::format(format, arguments...));
  }
  void setting(const char* key, int value) {
    office.config.WriteConfigInt(value, key, "Calls", foundation::StoreDatabase);
  }

  // A call on trunk 5 that starts on `day` March 2024.
  static exchange::CallRecord call(const std::string& number, int day, int hour, int minute, int seconds) {
    exchange::CallRecord record;
    record.year = 2024;
    record.month = 3;
    record.day = day;
    record.hour = hour;
    record.minute = minute;
    record.trunk = 5;
    record.dialledNumber = number;
    record.setDuration(seconds);
    return record;
  }
  PricedCall price(const exchange::CallRecord& record, PriceTrace* trace = nullptr) {
    PricedCall result;
    result.record = record;
    result.outcome = prices.CalcPrice(result.record, result.output, result.ignore, trace);
    return result;
  }
  // Texts of the audit log, one a line.
  std::string logged() {
    std::string lines;
    const jet::Snapshot rows = office.main->openSnapshot("SELECT * FROM Log");
    for (std::size_t row = 0; row < rows.rowCount(); ++row) {
      lines += rows.at(row, "Level").toText() + " " + rows.at(row, "Desc").toText() + "\n";
    }
    return lines;
  }

  support::TestOffice office;
  exchange::PartyDefinitions parties = definitions();
  std::unique_ptr<TariffDatabase> tariffs = std::make_unique<TariffDatabase>(std::move(office.tariffs));
  security::AuditLog log = openLog();
  PriceCalculator prices{office.config, parties, tariffs.get(), log, office.language, office.person};

 private:
  exchange::PartyDefinitions definitions() {
    exchange::PartyDefinitions result(office.config);
    result.countryCode = "40";
    result.areaCode = "21";
    return result;
  }
  security::AuditLog openLog() {
    security::AuditLog result(office.config, office.clock, [] { return std::string("Maria"); });
    result.OpenLog(*office.main);
    return result;
  }
};

}  // namespace tariff
