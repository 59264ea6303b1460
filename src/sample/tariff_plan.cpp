#include "sample/tariff_plan.h"

#include <span>
#include <string>

#include "base/printf.h"
#include "sample/company.h"
#include "sample/directory.h"
#include "sample/romania.h"
#include "sample/row_writer.h"
#include "sample/world.h"

namespace sample {

namespace {

// Destinations of the charge bands; the abroad ones follow the order of Zone.
enum Destination : int {
  Local = 1,
  National,
  Mobile,
  Free,
  Premium,
  EuropeanUnion,
  Europe,
  NorthAmerica,
  World,
  Satellite,
};

int destinationOf(Zone zone) {
  return EuropeanUnion + static_cast<int>(zone);
}

// Products of the days' primes.
constexpr int kWeekDays = 2 * 3 * 5 * 7 * 11;
constexpr int kWeekEnd = 13 * 17;
constexpr int kEveryDay = kWeekDays * kWeekEnd;

// Price of one minute (one pulse in pulse profiles) in the three bands of the day.
struct Rate {
  Destination destination;
  double peak;     // week-days 08:00-18:59
  double evening;  // week-days 19:00-07:59
  double weekEnd;
  const char* currency;
};

struct Profile {
  int id;
  int provider;
  const char* name;
  base::DateTime::Parts start;
  int unitSeconds;     // charging unit
  int minimumSeconds;  // charged once a call
  double setup;        // added once a call, in the destination's currency
  std::span<const Rate> rates;
};

constexpr Rate kStandard2020[] = {
    {Local, 0.12, 0.08, 0.06, "RON"},   {National, 0.24, 0.14, 0.12, "RON"},
    {Mobile, 0.55, 0.40, 0.36, "RON"},  {Free, 0, 0, 0, "RON"},
    {Premium, 2.40, 2.40, 2.40, "RON"}, {EuropeanUnion, 0.18, 0.15, 0.13, "EUR"},
    {Europe, 0.32, 0.28, 0.26, "EUR"},  {NorthAmerica, 0.15, 0.12, 0.12, "EUR"},
    {World, 0.85, 0.75, 0.70, "EUR"},   {Satellite, 6.50, 6.50, 6.50, "EUR"},
};

constexpr Rate kStandard2026[] = {
    {Local, 0.10, 0.07, 0.05, "RON"},   {National, 0.16, 0.10, 0.08, "RON"},
    {Mobile, 0.34, 0.25, 0.22, "RON"},  {Free, 0, 0, 0, "RON"},
    {Premium, 2.60, 2.60, 2.60, "RON"}, {EuropeanUnion, 0.11, 0.09, 0.08, "EUR"},
    {Europe, 0.26, 0.22, 0.20, "EUR"},  {NorthAmerica, 0.09, 0.08, 0.08, "EUR"},
    {World, 0.72, 0.64, 0.60, "EUR"},   {Satellite, 6.90, 6.90, 6.90, "EUR"},
};

constexpr Rate kFleet2020[] = {
    {Local, 0.30, 0.30, 0.20, "RON"},   {National, 0.30, 0.30, 0.20, "RON"},
    {Mobile, 0.18, 0.12, 0.06, "RON"},  {Free, 0, 0, 0, "RON"},
    {Premium, 3.10, 3.10, 3.10, "RON"}, {EuropeanUnion, 0.22, 0.22, 0.22, "USD"},
    {Europe, 0.45, 0.45, 0.45, "USD"},  {NorthAmerica, 0.25, 0.25, 0.25, "USD"},
    {World, 1.10, 1.10, 1.10, "USD"},   {Satellite, 8.00, 8.00, 8.00, "USD"},
};

constexpr Rate kFleet2026[] = {
    {Local, 0.25, 0.25, 0.15, "RON"},   {National, 0.25, 0.25, 0.15, "RON"},
    {Mobile, 0.14, 0.09, 0.04, "RON"},  {Free, 0, 0, 0, "RON"},
    {Premium, 3.10, 3.10, 3.10, "RON"}, {EuropeanUnion, 0.19, 0.19, 0.19, "USD"},
    {Europe, 0.40, 0.40, 0.40, "USD"},  {NorthAmerica, 0.22, 0.22, 0.22, "USD"},
    {World, 0.98, 0.98, 0.98, "USD"},   {Satellite, 8.40, 8.40, 8.40, "USD"},
};

// Pulses cost the same at all hours; a longer way only ticks faster.
constexpr Rate kPulses[] = {
    {Local, 0.09, 0.09, 0.09, "RON"},   {National, 0.09, 0.09, 0.09, "RON"},
    {Mobile, 0.09, 0.09, 0.09, "RON"},  {Free, 0, 0, 0, "RON"},
    {Premium, 0.11, 0.11, 0.11, "RON"}, {EuropeanUnion, 0.10, 0.10, 0.10, "RON"},
    {Europe, 0.10, 0.10, 0.10, "RON"},  {NorthAmerica, 0.10, 0.10, 0.10, "RON"},
    {World, 0.11, 0.11, 0.11, "RON"},   {Satellite, 0.12, 0.12, 0.12, "RON"},
};

constexpr base::DateTime::Parts kOld = {2020, 1, 1};
constexpr base::DateTime::Parts kNew = {2026, 1, 1};

constexpr Profile kProfiles[] = {
    {1, 1, "Standard", kOld, 60, 60, 0.05, kStandard2020}, {2, 1, "Standard", kNew, 60, 60, 0, kStandard2026},
    {3, 2, "Flotă", kOld, 30, 30, 0, kFleet2020},          {4, 2, "Flotă", kNew, 1, 0, 0.02, kFleet2026},
    {5, 3, "Impulsuri", kOld, 60, 0, 0, kPulses},
};

base::DateTime timeOfDay(int hour, int minute) {
  return base::DateTime(hour * 3600 + minute * 60);
}

class PlanWriter {
 public:
  explicit PlanWriter(jet::Database& tariffs)
      : providers_(tariffs, "providers", {"provider_id", "provider_name"}),
        areas_(tariffs, "prefixes2", {"prefix_id", "prefix_name", "prefix_ctry"}),
        prefixes_(tariffs, "prefixe", {"prefix_id", "provider_id", "destination_id"}),
        profiles_(tariffs, "profiles",
                  {"profile_id", "profile_name", "profile_start_date", "provider_id", "date_group", "free_minutes"}),
        charges_(tariffs, "charges",
                 {"destination_id", "profile_id", "charge_minimum_digits", "charge_start_time", "charge_end_time",
                  "charge_days", "charge_default_resolution", "charge_minimum", "charge_value", "charge_default",
                  "charge_pulse_value", "charge_currency"}) {}

  void write() {
    for (const Provider& provider : sample::providers()) {
      providers_.add({provider.id, provider.name});
      addPrefixes(provider.id);
    }
    addAreas();
    for (const Profile& profile : kProfiles) addProfile(profile);
  }

 private:
  // A home number is searched as "0040264..." when dialled so, and as normalised("0264...") when dialled in national
  // form; both name the area.
  void addHomeArea(std::string_view code, std::string_view name) {
    areas_.add({base::format("00%s%s", kCountryCode, code), name, kHomeCountry});
    areas_.add({normalised(base::format("0%s", code)), name, kHomeCountry});
  }

  void addAreas() {
    areas_.add({base::format("00%s", kCountryCode), kHomeCountry, kHomeCountry});
    for (const auto list : {landlineAreas(), mobileNetworks(), freeNumbers(), premiumNumbers()}) {
      for (const Area& area : list) addHomeArea(area.code, area.name);
    }
    for (const Area& area : shortNumbers()) areas_.add({normalised(area.code), area.name, kHomeCountry});
    for (const Country& country : countries()) {
      areas_.add({base::format("00%s", country.code), country.name, country.name});
    }
    for (const City& city : cities()) areas_.add({base::format("00%s", city.prefix), city.name, city.country});
  }

  void addHomePrefix(int provider, std::string_view code, Destination destination) {
    prefixes_.add({base::format("0%s", code), provider, destination});
    prefixes_.add({base::format("00%s%s", kCountryCode, code), provider, destination});
  }

  void addPrefixes(int provider) {
    prefixes_.add({jet::Value(), provider, Local});  // the catch-all of numbers without a prefix
    for (const Area& area : landlineAreas()) {
      const bool own = area.code == "21" || area.code == "31";
      addHomePrefix(provider, area.code, own ? Local : National);
    }
    for (const Area& network : mobileNetworks()) addHomePrefix(provider, network.code, Mobile);
    for (const Area& number : freeNumbers()) addHomePrefix(provider, number.code, Free);
    for (const Area& number : premiumNumbers()) addHomePrefix(provider, number.code, Premium);
    for (const Area& number : shortNumbers()) prefixes_.add({number.code, provider, Free});
    for (const Country& country : countries()) {
      prefixes_.add({base::format("00%s", country.code), provider, destinationOf(country.zone)});
    }
  }

  void addProfile(const Profile& profile) {
    const auto start = base::DateTime::fromParts(profile.start);
    profiles_.add({profile.id, profile.name, *start, profile.provider, 0, 0});
    for (const Rate& rate : profile.rates) {
      if (profile.rates.data() == kPulses) {
        addBand(profile, rate, kEveryDay, timeOfDay(0, 0), timeOfDay(23, 59), rate.peak);
        continue;
      }
      addBand(profile, rate, kWeekDays, timeOfDay(8, 0), timeOfDay(18, 59), rate.peak);
      addBand(profile, rate, kWeekDays, timeOfDay(0, 0), timeOfDay(7, 59), rate.evening);
      addBand(profile, rate, kWeekDays, timeOfDay(19, 0), timeOfDay(23, 59), rate.evening);
      addBand(profile, rate, kWeekEnd, timeOfDay(0, 0), timeOfDay(23, 59), rate.weekEnd);
    }
  }

  void addBand(const Profile& profile, const Rate& rate, int days, base::DateTime from, base::DateTime to,
               double price) {
    const bool pulses = profile.rates.data() == kPulses;
    const bool free = rate.destination == Free;
    const double unit = pulses ? price : price * profile.unitSeconds / 60;
    charges_.add({rate.destination, profile.id, 0, from, to, days, profile.unitSeconds * 100,
                  free ? 0 : profile.minimumSeconds, unit, free ? 0.0 : profile.setup, pulses ? price : 0.0,
                  rate.currency});
  }

  RowWriter providers_, areas_, prefixes_, profiles_, charges_;
};

}  // namespace

void fillTariffs(jet::Database& tariffs) {
  jet::Transaction transaction(tariffs);
  PlanWriter(tariffs).write();
  transaction.commit();
}

}  // namespace sample
