#include "tariff/price_report.h"

#include <array>

#include "base/printf.h"

namespace tariff {

namespace {

using Lines = std::vector<std::string>;

constexpr std::array<const char*, 7> kDayNames = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                                  "Thursday", "Friday", "Saturday"};

std::string dayNames(DayEncoding encoding, std::int64_t chargeDays) {
  std::string names;
  for (int day = 0; day < 7; ++day) {
    if (!daysMatch(encoding, chargeDays, day)) continue;
    if (!names.empty()) names += ", ";
    names += kDayNames[static_cast<std::size_t>(day)];
  }
  return names.empty() ? "no day" : names;
}

std::string orUnnamed(const std::string& name) {
  return name.empty() ? std::string("(unnamed)") : "\"" + name + "\"";
}

std::string dateAndTime(base::DateTime time) {
  return time.format("%Y-%m-%d %H:%M:%S");
}

void addTrunk(Lines& lines, const PriceTrace::Trunk& trunk) {
  const exchange::tagTRUNKINFO& definition = trunk.definition;
  if (!trunk.defined || definition.providerId <= 0) {
    lines.push_back(
        base::format("Trunk %d has no provider yet: recording the first call on it will give it one, which "
                     "may set another price.",
                     trunk.number));
    return;
  }
  lines.push_back(base::format("Trunk %d: %s, provider id %d, profile %s%s%s.", trunk.number,
                               orUnnamed(definition.label), definition.providerId, orUnnamed(definition.profile),
                               definition.pulses != 0 ? ", priced by pulses" : "",
                               definition.ignoreZeroPulses != 0 ? ", ignores calls without pulses" : ""));
}

void addProvider(Lines& lines, const PriceTrace::Provider& provider) {
  if (provider.id <= 0) return;  // said with the trunk
  if (!provider.defined) {
    lines.push_back(base::format("Provider %d: not defined.", provider.id));
    return;
  }
  lines.push_back(base::format("Provider %d: %s, %d free seconds, local prefixes \"%s\".", provider.id,
                               orUnnamed(provider.definition.name), provider.definition.freeSeconds,
                               provider.definition.localPrefixes));
}

void addProfile(Lines& lines, const PriceTrace::Profile& profile) {
  const std::string since = profile.startDate ? profile.startDate->format("%Y-%m-%d") : std::string("an unknown date");
  lines.push_back(base::format("Profile %d: %s, in force since %s, %d free seconds.", profile.id,
                               orUnnamed(profile.name), since, profile.freeMinutes));
}

void addChargedTime(Lines& lines, const PriceTrace::ChargedTime& time) {
  lines.push_back(base::format("Charged time: %d s - %d free = %d s%s.", time.durationSeconds, time.freeSeconds,
                               time.chargedSeconds, time.takenOffRecord ? "; the free seconds leave the record" : ""));
}

void addDestination(Lines& lines, const PriceTrace::Destination& destination) {
  switch (destination.match) {
    case PriceTrace::Match::Dialled:
      lines.push_back(
          base::format("Destination %d: prefix \"%s\" of the number as dialled.", destination.id, destination.prefix));
      return;
    case PriceTrace::Match::Normalised:
      lines.push_back(base::format("Destination %d: prefix \"%s\" of the number in international form.", destination.id,
                                   destination.prefix));
      return;
    case PriceTrace::Match::LocalCatchAll:
      lines.push_back(
          base::format("Destination %d: the provider's local destination, without prefix.", destination.id));
      return;
  }
}

void addBandDay(Lines& lines, const BandDay& day, const ChargeBand& charge) {
  const char* name = kDayNames[static_cast<std::size_t>(day.dayCode)];
  if (day.first && day.minimumAmount != 0) {
    lines.push_back(base::format("    minimum of %d s: %.4f", charge.minimumSeconds, day.minimumAmount));
  }
  if (day.first && day.fixedAmount != 0) lines.push_back(base::format("    fixed amount: %.4f", day.fixedAmount));
  if (day.units == 0) {
    lines.push_back(base::format("    %s: %d s left, no unit", name, day.seconds));
    return;
  }
  lines.push_back(
      base::format("    %s: %d s = %d units x %.4f = %.4f", name, day.seconds, day.units, charge.value, day.amount));
}

void addBand(Lines& lines, const PriceTrace::Band& band, DayEncoding encoding) {
  const ChargeBand& charge = band.charge;
  lines.push_back(base::format("Band %02d:%02d-%02d:%02d on %s, unit %.2f s at %.4f %s:", charge.startMinute / 60,
                               charge.startMinute % 60, charge.endMinute / 60, charge.endMinute % 60,
                               dayNames(encoding, charge.days), static_cast<double>(charge.resolution) / 100,
                               charge.value, band.currency));
  if (band.charged.empty()) lines.push_back("    the call does not touch it");
  for (const BandDay& day : band.charged) addBandDay(lines, day, charge);
}

void addOutcome(Lines& lines, const PricingContext& output, PriceOutcome outcome) {
  if (outcome != PriceOutcome::Priced) lines.push_back("Result: " + describe(outcome) + ".");
  lines.push_back(
      base::format(output.currency.empty() ? "Price: %.4f" : "Price: %.4f %s", output.price, output.currency));
}

}  // namespace

std::vector<std::string> priceReport(const PriceTrace& trace, const exchange::CallRecord& record,
                                     const PricingContext& output, PriceOutcome outcome) {
  Lines lines;
  if (trace.start) {
    lines.push_back(base::format("Call to \"%s\" on trunk %d, start %s.", record.dialledNumber, record.trunk,
                                 dateAndTime(*trace.start)));
  }
  if (trace.ignoredUpTo) lines.push_back(base::format("Calls up to %d s are ignored.", *trace.ignoredUpTo));
  if (trace.trunk) addTrunk(lines, *trace.trunk);
  if (trace.provider) addProvider(lines, *trace.provider);
  if (trace.normalisedNumber) lines.push_back("International form: " + *trace.normalisedNumber);
  if (trace.profile) addProfile(lines, *trace.profile);
  if (trace.time) addChargedTime(lines, *trace.time);
  if (trace.local) lines.push_back(*trace.local ? "A local call." : "Not a local call.");
  if (trace.destination) addDestination(lines, *trace.destination);
  if (trace.pulses) {
    lines.push_back(base::format("Pulses: %d x %.4f = %.4f", trace.pulses->count, trace.pulses->value, output.price));
  }
  if (trace.interval) {
    lines.push_back(base::format("Charged from %s to %s, %d calendar day(s).", dateAndTime(trace.interval->start),
                                 dateAndTime(trace.interval->end), trace.interval->days()));
  }
  for (const PriceTrace::Band& band : trace.bands) addBand(lines, band, trace.dayEncoding);
  addOutcome(lines, output, outcome);
  return lines;
}

std::string describe(PriceOutcome outcome) {
  switch (outcome) {
    case PriceOutcome::Priced:
      return "priced";
    case PriceOutcome::Ignored:
      return "too short, the call is ignored (\"Ignore_short_calls\")";
    case PriceOutcome::ImpossibleDate:
      return "the date or time of the call does not exist";
    case PriceOutcome::NoProvider:
      return "the trunk has no provider";
    case PriceOutcome::NoPulses:
      return "no pulses were counted, and the trunk ignores such calls";
    case PriceOutcome::NoNumber:
      return "no number was dialled";
    case PriceOutcome::NoTariffs:
      return "there is no tariff database";
    case PriceOutcome::NoProfile:
      return "no profile of the provider was in force on that day";
    case PriceOutcome::NothingToCharge:
      return "the free seconds cover the whole call";
    case PriceOutcome::NoDestination:
      return "no prefix of the provider matches the number";
    case PriceOutcome::NoCharge:
      return "no charge band matches the destination, the profile, the time and the number's length";
    case PriceOutcome::UnusableCharge:
      return "a charge band without currency or times ended the calculation";
  }
  return {};
}

}  // namespace tariff
