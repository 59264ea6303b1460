#include "tariff/tariff_tables.h"

#include <algorithm>
#include <array>

namespace tariff {

namespace {

// Sunday .. Saturday.
constexpr std::array<std::int64_t, 7> kPrimes = {17, 2, 3, 5, 7, 11, 13};
constexpr std::int64_t kLargestPlain = 20;

std::int32_t number(jet::Recordset& row, const char* field) {
  return static_cast<std::int32_t>(row.get(field).toLong());
}

int minuteOfDay(const jet::Value& value) {
  const auto time = value.toDateTime();
  return time ? time->secondOfDay() / 60 : 0;
}

jet::Value timeOfDay(int minute) {
  return base::DateTime(minute * 60);
}

template <typename Take>
void forEach(jet::Database& database, const char* select, Take take) {
  const auto row = database.openRecordset(select);
  for (; !row->eof(); row->moveNext()) take(*row);
}

// Replaces a table's rows; `put` fills a new row from a record.
template <typename Record, typename Put>
void replaceRows(jet::Database& database, const std::string& table, const std::vector<Record>& records, Put put) {
  database.execute("delete from " + table);
  const auto row = database.openRecordset("SELECT * FROM " + table);
  for (const Record& record : records) {
    row->addNew();
    put(*row, record);
    row->update();
  }
}

std::int64_t productOf(unsigned days) {
  std::int64_t product = 1;
  for (std::size_t day = 0; day < kPrimes.size(); ++day) {
    if ((days >> day & 1U) != 0) product *= kPrimes[day];
  }
  return product;
}

void putCharge(jet::Recordset& row, const ChargeRow& charge, std::int64_t days) {
  row.addNew();
  row.set("destination_id", charge.destinationId);
  row.set("profile_id", charge.profileId);
  row.set("charge_minimum_digits", charge.minimumDigits);
  row.set("charge_start_time", timeOfDay(charge.startMinute));
  row.set("charge_end_time", timeOfDay(charge.endMinute));
  row.set("charge_days", days);
  row.set("charge_default_resolution", charge.resolution);
  row.set("charge_minimum", charge.minimumSeconds);
  row.set("charge_value", charge.value);
  row.set("charge_default", charge.fixedAmount);
  row.set("charge_pulse_value", charge.pulseValue);
  row.set("charge_currency", charge.currency);
  row.update();
}

}  // namespace

void addCharge(jet::Recordset& charges, const ChargeRow& charge, DayEncoding encoding) {
  if (encoding == DayEncoding::Product) {
    putCharge(charges, charge, productOf(charge.days));
    return;
  }
  for (int day = 0; day < static_cast<int>(kPrimes.size()); ++day) {
    if ((charge.days >> day & 1U) != 0) putCharge(charges, charge, day);
  }
}

std::optional<unsigned> daysFromStored(DayEncoding encoding, std::int64_t stored) {
  if (encoding == DayEncoding::Plain) {
    if (stored < 0 || stored > 6) return std::nullopt;
    return 1U << stored;
  }
  if (stored <= 1) return std::nullopt;
  unsigned days = 0;
  for (std::size_t day = 0; day < kPrimes.size(); ++day) {
    if (stored % kPrimes[day] == 0) days |= 1U << day;
  }
  return days == 0 ? std::nullopt : std::optional<unsigned>(days);
}

StoredDays storedDays(const std::vector<ChargeRow>& charges) {
  StoredDays result;
  const bool product = std::any_of(charges.begin(), charges.end(),
                                   [](const ChargeRow& charge) { return productOf(charge.days) > kLargestPlain; });
  result.encoding = product ? DayEncoding::Product : DayEncoding::Plain;
  for (const ChargeRow& charge : charges) {
    std::vector<std::int64_t> rows;
    if (product && charge.days != 0) {
      rows.push_back(productOf(charge.days));
    } else if (!product) {
      for (int day = 0; day < 7; ++day) {
        if ((charge.days >> day & 1U) != 0) rows.push_back(day);
      }
    }
    result.ofBand.push_back(std::move(rows));
  }
  return result;
}

TariffTables loadTariffTables(jet::Database& tariffs, DayEncoding encoding) {
  TariffTables tables;
  forEach(tariffs, "SELECT * from providers", [&](jet::Recordset& row) {
    tables.providers.push_back({number(row, "provider_id"), row.get("provider_name").toText()});
  });
  forEach(tariffs, "SELECT * from prefixes2 order by prefix_id", [&](jet::Recordset& row) {
    tables.areas.push_back(
        {row.get("prefix_id").toText(), row.get("prefix_name").toText(), row.get("prefix_ctry").toText()});
  });
  forEach(tariffs, "SELECT * from prefixe", [&](jet::Recordset& row) {
    tables.prefixes.push_back(
        {row.get("prefix_id").toText(), number(row, "provider_id"), number(row, "destination_id")});
  });
  forEach(tariffs, "SELECT * from profiles", [&](jet::Recordset& row) {
    tables.profiles.push_back({number(row, "profile_id"), row.get("profile_name").toText(),
                               row.get("profile_start_date").toDateTime(), number(row, "provider_id"),
                               number(row, "date_group"), number(row, "free_minutes")});
  });
  forEach(tariffs, "SELECT * from charges", [&](jet::Recordset& row) {
    ChargeRow charge;
    charge.destinationId = number(row, "destination_id");
    charge.profileId = number(row, "profile_id");
    charge.minimumDigits = number(row, "charge_minimum_digits");
    charge.startMinute = minuteOfDay(row.get("charge_start_time"));
    charge.endMinute = minuteOfDay(row.get("charge_end_time"));
    charge.days = daysFromStored(encoding, row.get("charge_days").toLong(-1)).value_or(0);
    charge.resolution = number(row, "charge_default_resolution");
    charge.minimumSeconds = number(row, "charge_minimum");
    charge.value = row.get("charge_value").toDouble();
    charge.fixedAmount = row.get("charge_default").toDouble();
    charge.pulseValue = row.get("charge_pulse_value").toDouble();
    charge.currency = row.get("charge_currency").toText();
    tables.charges.push_back(std::move(charge));
  });
  return tables;
}

void saveTariffTables(jet::Database& tariffs, const TariffTables& tables) {
  jet::Transaction transaction(tariffs);
  replaceRows(tariffs, "providers", tables.providers, [](jet::Recordset& row, const ProviderRow& provider) {
    row.set("provider_id", provider.providerId);
    row.set("provider_name", provider.name);
  });
  replaceRows(tariffs, "prefixes2", tables.areas, [](jet::Recordset& row, const AreaRow& area) {
    row.set("prefix_id", area.prefix);
    row.set("prefix_name", area.name);
    row.set("prefix_ctry", area.country);
  });
  replaceRows(tariffs, "prefixe", tables.prefixes, [](jet::Recordset& row, const PrefixRow& prefix) {
    row.set("prefix_id", prefix.prefix);
    row.set("provider_id", prefix.providerId);
    row.set("destination_id", prefix.destinationId);
  });
  replaceRows(tariffs, "profiles", tables.profiles, [](jet::Recordset& row, const ProfileRow& profile) {
    row.set("profile_id", profile.profileId);
    // A missing name is what marks the profile of trunks that name none.
    row.set("profile_name", profile.name.empty() ? jet::Value() : jet::Value(profile.name));
    row.set("profile_start_date", profile.startDate ? jet::Value(*profile.startDate) : jet::Value());
    row.set("provider_id", profile.providerId);
    row.set("date_group", profile.dateGroup);
    row.set("free_minutes", profile.freeMinutes);
  });
  const StoredDays days = storedDays(tables.charges);
  tariffs.execute("delete from charges");
  const auto row = tariffs.openRecordset("SELECT * FROM charges");
  for (std::size_t i = 0; i < tables.charges.size(); ++i) {
    for (const std::int64_t stored : days.ofBand[i]) putCharge(*row, tables.charges[i], stored);
  }
  transaction.commit();
}

}  // namespace tariff
