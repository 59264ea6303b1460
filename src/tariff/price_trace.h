#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/datetime.h"
#include "exchange/party_definitions.h"
#include "tariff/charge_bands.h"

namespace tariff {

// How the pricing of a call ended.
enum class PriceOutcome {
  Priced,           // price and currency are set
  Ignored,          // at or under "Ignore_short_calls"
  ImpossibleDate,   // the record's date or time does not exist
  NoProvider,       // the trunk has none
  NoPulses,         // the trunk ignores calls without pulses
  NoNumber,         // nothing was dialled
  NoTariffs,        // there is no tariff database
  NoProfile,        // no profile of the provider was in force
  NothingToCharge,  // the free seconds cover the call
  NoDestination,    // no prefix matches
  NoCharge,         // no charge band matches
  UnusableCharge,   // a band without currency or times ended the sum; what was summed before it is kept
};

// What each step of a price found, in the order of the steps; a step that was not reached stays empty.
struct PriceTrace {
  struct Trunk {
    bool defined = false;  // false: no trunk definition has the number
    std::int32_t number = 0;
    exchange::tagTRUNKINFO definition;
  };
  struct Provider {
    bool defined = false;
    std::int32_t id = 0;
    exchange::ProviderDefinition definition;
  };
  struct Profile {
    std::int64_t id = 0;
    std::string name;
    std::optional<base::DateTime> startDate;
    std::int64_t freeMinutes = 0;
  };
  struct ChargedTime {
    std::int64_t durationSeconds = 0;
    std::int64_t freeSeconds = 0;
    std::int64_t chargedSeconds = 0;
    bool takenOffRecord = false;  // "Seconds_not_charged"
  };
  enum class Match { Dialled, Normalised, LocalCatchAll };
  struct Destination {
    std::int64_t id = 0;
    Match match = Match::Dialled;
    std::string prefix;
  };
  struct Pulses {
    std::int32_t count = 0;
    double value = 0;
  };
  struct Band {
    ChargeBand charge;
    std::string currency;
    std::vector<BandDay> charged;
  };

  std::optional<base::DateTime> start;
  std::optional<std::int32_t> ignoredUpTo;  // "Ignore_short_calls", unless off
  std::optional<Trunk> trunk;
  std::optional<Provider> provider;
  std::optional<std::string> normalisedNumber;
  std::optional<bool> local;
  std::optional<Profile> profile;
  std::optional<ChargedTime> time;
  std::optional<Destination> destination;
  std::optional<Pulses> pulses;
  std::optional<ChargedInterval> interval;
  DayEncoding dayEncoding = DayEncoding::Plain;
  std::vector<Band> bands;
};

}  // namespace tariff
