#include "tariff/price_report.h"

#include <algorithm>
#include <array>

#include "base/printf.h"

namespace tariff {

namespace {

// The text of a step: its key, and the English words that serve beside a language file without that key.
struct StepText {
  const char* key;
  const char* english;
};

constexpr std::array<StepText, 7> kDays = {{{"IDS_SUNDAY", "Sunday"},
                                            {"IDS_MONDAY", "Monday"},
                                            {"IDS_TUESDAY", "Tuesday"},
                                            {"IDS_WEDNESDAY", "Wednesday"},
                                            {"IDS_THURSDAY", "Thursday"},
                                            {"IDS_FRIDAY", "Friday"},
                                            {"IDS_SATURDAY", "Saturday"}}};

constexpr StepText kCall = {"IDS_PRICE_CALL", "Call to \"%s\" on trunk %d, start %s."};
constexpr StepText kIgnoredUpTo = {"IDS_PRICE_IGNORED_UP_TO", "Calls up to %d s are ignored."};
constexpr StepText kTrunkMissing = {
    "IDS_PRICE_NO_TRUNK",
    "Trunk %d has no provider yet: recording the first call on it will give it one, which may set another price."};
constexpr StepText kTrunk = {"IDS_PRICE_TRUNK", "Trunk %d: %s, provider id %d, profile %s%s%s."};
constexpr StepText kByPulses = {"IDS_PRICE_BY_PULSES", "priced by pulses"};
constexpr StepText kIgnoresZero = {"IDS_PRICE_IGNORES_ZERO", "ignores calls without pulses"};
constexpr StepText kUnnamed = {"IDS_PRICE_UNNAMED", "(unnamed)"};
constexpr StepText kProviderMissing = {"IDS_PRICE_NO_PROVIDER", "Provider %d: not defined."};
constexpr StepText kProvider = {"IDS_PRICE_PROVIDER", "Provider %d: %s, %d free seconds, local prefixes \"%s\"."};
constexpr StepText kNormalised = {"IDS_PRICE_NORMALISED", "International form: %s"};
constexpr StepText kProfile = {"IDS_PRICE_PROFILE", "Profile %d: %s, in force since %s, %d free seconds."};
constexpr StepText kUnknownDate = {"IDS_PRICE_UNKNOWN_DATE", "an unknown date"};
constexpr StepText kTime = {"IDS_PRICE_TIME", "Charged time: %d s - %d free = %d s%s."};
constexpr StepText kLeavesRecord = {"IDS_PRICE_LEAVES_RECORD", "the free seconds leave the record"};
constexpr StepText kLocal = {"IDS_PRICE_LOCAL", "A local call."};
constexpr StepText kNotLocal = {"IDS_PRICE_NOT_LOCAL", "Not a local call."};
constexpr StepText kDialled = {"IDS_PRICE_DIALLED", "Destination %d: prefix \"%s\" of the number as dialled."};
constexpr StepText kInternationalDestination = {"IDS_PRICE_INTERNATIONAL",
                                                "Destination %d: prefix \"%s\" of the number in international form."};
constexpr StepText kCatchAll = {"IDS_PRICE_CATCH_ALL",
                                "Destination %d: the provider's local destination, without prefix."};
constexpr StepText kPulses = {"IDS_PRICE_PULSES", "Pulses: %d x %.4f = %.4f"};
constexpr StepText kInterval = {"IDS_PRICE_INTERVAL", "Charged from %s to %s, %d calendar day(s)."};
constexpr StepText kNoDay = {"IDS_PRICE_NO_DAY", "no day"};
constexpr StepText kBand = {"IDS_PRICE_BAND", "Band %02d:%02d-%02d:%02d on %s, unit %.2f s at %.4f %s:"};
constexpr StepText kUntouched = {"IDS_PRICE_UNTOUCHED", "the call does not touch it"};
constexpr StepText kMinimum = {"IDS_PRICE_MINIMUM", "minimum of %d s: %.4f"};
constexpr StepText kFixed = {"IDS_PRICE_FIXED", "fixed amount: %.4f"};
constexpr StepText kNoUnit = {"IDS_PRICE_NO_UNIT", "%s: %d s left, no unit"};
constexpr StepText kUnits = {"IDS_PRICE_UNITS", "%s: %d s = %d units x %.4f = %.4f"};
constexpr StepText kResult = {"IDS_PRICE_RESULT", "Result: %s."};
constexpr StepText kPrice = {"IDS_PRICE_PRICE", "Price: %.4f"};
constexpr StepText kOutcomePriced = {"IDS_PRICE_OUTCOME_PRICED", "priced"};
constexpr StepText kOutcomeIgnored = {"IDS_PRICE_OUTCOME_IGNORED",
                                      "too short, the call is ignored (\"Ignore_short_calls\")"};
constexpr StepText kOutcomeDate = {"IDS_PRICE_OUTCOME_DATE", "the date or time of the call does not exist"};
constexpr StepText kOutcomeNoProvider = {"IDS_PRICE_OUTCOME_NO_PROVIDER", "the trunk has no provider"};
constexpr StepText kOutcomeNoPulses = {"IDS_PRICE_OUTCOME_NO_PULSES",
                                       "no pulses were counted, and the trunk ignores such calls"};
constexpr StepText kOutcomeNoNumber = {"IDS_PRICE_OUTCOME_NO_NUMBER", "no number was dialled"};
constexpr StepText kOutcomeNoTariffs = {"IDS_PRICE_OUTCOME_NO_TARIFFS", "there is no tariff database"};
constexpr StepText kOutcomeNoProfile = {"IDS_PRICE_OUTCOME_NO_PROFILE",
                                        "no profile of the provider was in force on that day"};
constexpr StepText kOutcomeFree = {"IDS_PRICE_OUTCOME_FREE", "the free seconds cover the whole call"};
constexpr StepText kOutcomeNoDestination = {"IDS_PRICE_OUTCOME_NO_DESTINATION",
                                            "no prefix of the provider matches the number"};
constexpr StepText kOutcomeNoCharge = {
    "IDS_PRICE_OUTCOME_NO_CHARGE",
    "no charge band matches the destination, the profile, the time and the number's length"};
constexpr StepText kOutcomeUnusable = {"IDS_PRICE_OUTCOME_UNUSABLE",
                                       "a charge band without currency or times ended the calculation"};

// Details of a step are under it.
constexpr const char* kIndent = "    ";

std::string dateAndTime(base::DateTime time) {
  return time.format("%Y-%m-%d %H:%M:%S");
}

// The lines of one report, in the language in use.
class Report {
 public:
  explicit Report(const foundation::LanguageFile& language) : language_(language) {}

  void addHead(const PriceTrace& trace, const exchange::CallRecord& record);
  void addTrunk(const PriceTrace::Trunk& trunk);
  void addProvider(const PriceTrace::Provider& provider);
  void addProfile(const PriceTrace::Profile& profile);
  void addChargedTime(const PriceTrace::ChargedTime& time);
  void addDestination(const PriceTrace::Destination& destination);
  void addBand(const PriceTrace::Band& band, DayEncoding encoding);
  void addOutcome(const PricingContext& output, PriceOutcome outcome);

  template <typename... Arguments>
  void add(const StepText& text, const Arguments&... arguments) {
    lines_.push_back(base::format(words(text), arguments...));
  }
  [[nodiscard]] std::vector<std::string> take() { return std::move(lines_); }

 private:
  template <typename... Arguments>
  void addDetail(const StepText& text, const Arguments&... arguments) {
    lines_.push_back(kIndent + base::format(words(text), arguments...));
  }
  void addBandDay(const BandDay& day, const ChargeBand& charge);

  [[nodiscard]] std::string words(const StepText& text) const {
    std::string translated = language_.Translate(text.key);
    return translated == text.key ? std::string(text.english) : translated;
  }
  // A remark after a step, when it holds.
  [[nodiscard]] std::string remark(bool holds, const char* separator, const StepText& text) const {
    return holds ? separator + words(text) : std::string();
  }
  [[nodiscard]] std::string orUnnamed(const std::string& name) const {
    return name.empty() ? words(kUnnamed) : "\"" + name + "\"";
  }
  [[nodiscard]] std::string dayName(int day) const { return words(kDays[static_cast<std::size_t>(day)]); }
  [[nodiscard]] std::string dayNames(DayEncoding encoding, std::int64_t chargeDays) const;

  const foundation::LanguageFile& language_;
  std::vector<std::string> lines_;
};

std::string Report::dayNames(DayEncoding encoding, std::int64_t chargeDays) const {
  std::string names;
  for (int day = 0; day < 7; ++day) {
    if (!daysMatch(encoding, chargeDays, day)) continue;
    if (!names.empty()) names += ", ";
    names += dayName(day);
  }
  return names.empty() ? words(kNoDay) : names;
}

void Report::addHead(const PriceTrace& trace, const exchange::CallRecord& record) {
  if (trace.start) add(kCall, record.dialledNumber, record.trunk, dateAndTime(*trace.start));
  if (trace.ignoredUpTo) add(kIgnoredUpTo, *trace.ignoredUpTo);
}

void Report::addTrunk(const PriceTrace::Trunk& trunk) {
  const exchange::tagTRUNKINFO& definition = trunk.definition;
  if (!trunk.defined || definition.providerId <= 0) return add(kTrunkMissing, trunk.number);
  add(kTrunk, trunk.number, orUnnamed(definition.label), definition.providerId, orUnnamed(definition.profile),
      remark(definition.pulses != 0, ", ", kByPulses), remark(definition.ignoreZeroPulses != 0, ", ", kIgnoresZero));
}

void Report::addProvider(const PriceTrace::Provider& provider) {
  if (provider.id <= 0) return;  // said with the trunk
  if (!provider.defined) return add(kProviderMissing, provider.id);
  add(kProvider, provider.id, orUnnamed(provider.definition.name), provider.definition.freeSeconds,
      provider.definition.localPrefixes);
}

void Report::addProfile(const PriceTrace::Profile& profile) {
  const std::string since = profile.startDate ? profile.startDate->format("%Y-%m-%d") : words(kUnknownDate);
  add(kProfile, profile.id, orUnnamed(profile.name), since, profile.freeMinutes);
}

void Report::addChargedTime(const PriceTrace::ChargedTime& time) {
  add(kTime, time.durationSeconds, time.freeSeconds, time.chargedSeconds,
      remark(time.takenOffRecord, "; ", kLeavesRecord));
}

void Report::addDestination(const PriceTrace::Destination& destination) {
  switch (destination.match) {
    case PriceTrace::Match::Dialled:
      return add(kDialled, destination.id, destination.prefix);
    case PriceTrace::Match::Normalised:
      return add(kInternationalDestination, destination.id, destination.prefix);
    case PriceTrace::Match::LocalCatchAll:
      return add(kCatchAll, destination.id);
  }
}

void Report::addBandDay(const BandDay& day, const ChargeBand& charge) {
  if (day.first && day.minimumAmount != 0) addDetail(kMinimum, charge.minimumSeconds, day.minimumAmount);
  if (day.first && day.fixedAmount != 0) addDetail(kFixed, day.fixedAmount);
  // A minimum that is longer than the call leaves nothing.
  if (day.units == 0) return addDetail(kNoUnit, dayName(day.dayCode), std::max<std::int64_t>(day.seconds, 0));
  addDetail(kUnits, dayName(day.dayCode), day.seconds, day.units, charge.value, day.amount);
}

void Report::addBand(const PriceTrace::Band& band, DayEncoding encoding) {
  const ChargeBand& charge = band.charge;
  add(kBand, charge.startMinute / 60, charge.startMinute % 60, charge.endMinute / 60, charge.endMinute % 60,
      dayNames(encoding, charge.days), static_cast<double>(charge.resolution) / 100, charge.value, band.currency);
  if (band.charged.empty()) addDetail(kUntouched);
  for (const BandDay& day : band.charged) addBandDay(day, charge);
}

const StepText& outcomeText(PriceOutcome outcome) {
  switch (outcome) {
    case PriceOutcome::Priced:
      return kOutcomePriced;
    case PriceOutcome::Ignored:
      return kOutcomeIgnored;
    case PriceOutcome::ImpossibleDate:
      return kOutcomeDate;
    case PriceOutcome::NoProvider:
      return kOutcomeNoProvider;
    case PriceOutcome::NoPulses:
      return kOutcomeNoPulses;
    case PriceOutcome::NoNumber:
      return kOutcomeNoNumber;
    case PriceOutcome::NoTariffs:
      return kOutcomeNoTariffs;
    case PriceOutcome::NoProfile:
      return kOutcomeNoProfile;
    case PriceOutcome::NothingToCharge:
      return kOutcomeFree;
    case PriceOutcome::NoDestination:
      return kOutcomeNoDestination;
    case PriceOutcome::NoCharge:
      return kOutcomeNoCharge;
    case PriceOutcome::UnusableCharge:
      break;
  }
  return kOutcomeUnusable;
}

void Report::addOutcome(const PricingContext& output, PriceOutcome outcome) {
  if (outcome != PriceOutcome::Priced) add(kResult, words(outcomeText(outcome)));
  add(kPrice, output.price);
  if (!output.currency.empty()) lines_.back() += ' ' + output.currency;
}

}  // namespace

std::vector<std::string> priceReport(const PriceTrace& trace, const exchange::CallRecord& record,
                                     const PricingContext& output, PriceOutcome outcome,
                                     const foundation::LanguageFile& language) {
  Report report(language);
  report.addHead(trace, record);
  if (trace.trunk) report.addTrunk(*trace.trunk);
  if (trace.provider) report.addProvider(*trace.provider);
  if (trace.normalisedNumber) report.add(kNormalised, *trace.normalisedNumber);
  if (trace.profile) report.addProfile(*trace.profile);
  if (trace.time) report.addChargedTime(*trace.time);
  if (trace.local) report.add(*trace.local ? kLocal : kNotLocal);
  if (trace.destination) report.addDestination(*trace.destination);
  if (trace.pulses) report.add(kPulses, trace.pulses->count, trace.pulses->value, output.price);
  if (trace.interval) {
    report.add(kInterval, dateAndTime(trace.interval->start), dateAndTime(trace.interval->end), trace.interval->days());
  }
  for (const PriceTrace::Band& band : trace.bands) report.addBand(band, trace.dayEncoding);
  report.addOutcome(output, outcome);
  return report.take();
}

}  // namespace tariff
