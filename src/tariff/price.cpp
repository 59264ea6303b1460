#include "tariff/price.h"

#include <array>
#include <span>

#include "base/characters.h"
#include "base/printf.h"
#include "base/text.h"
#include "tariff/dialled_number.h"

namespace tariff {

using exchange::CallRecord;

namespace {

// Stand in for a trunk or provider without definition: provider 0, no profile, all switches off.
const exchange::tagTRUNKINFO kNoTrunk;
const exchange::ProviderDefinition kNoProvider;

constexpr std::int32_t kIgnoresNone = -1;

}  // namespace

// What the steps found out about the call so far.
struct PriceCalculator::Call {
  CallRecord& record;
  PriceTrace* trace;  // null unless somebody asked

  base::DateTime start;       // at second 0
  std::int64_t duration = 0;  // seconds, before any are taken off
  const exchange::tagTRUNKINFO* trunk = &kNoTrunk;
  const exchange::ProviderDefinition* provider = &kNoProvider;
  std::string normalised = {};
  std::int64_t profileId = 0;
  std::int64_t freeSeconds = 0;
  std::int64_t destinationId = 0;

  [[nodiscard]] std::int64_t chargedSeconds() const { return duration - freeSeconds; }
};

namespace {

// The start second is not used.
std::optional<base::DateTime> startOf(const CallRecord& record) {
  return base::DateTime::fromParts(record.year, record.month, record.day, record.hour24(), record.minute, 0);
}

std::string profileQuery(const std::string& profile, base::DateTime date, std::int32_t providerId) {
  const base::DateTime::Parts day = date.parts();
  const char* text = profile.empty()
                         ? "SELECT TOP 1 * FROM profiles WHERE (profile_name = '%s' or profile_name is null) and "
                           "profile_start_date <= #%d/%d/%d# and provider_id = %d order by profile_start_date desc"
                         : "SELECT TOP 1 * FROM profiles WHERE profile_name = '%s' and "
                           "profile_start_date <= #%d/%d/%d# and provider_id = %d order by profile_start_date desc";
  return base::format(text, profile, day.month, day.day, day.year, providerId);
}

constexpr const char* kDialledDestination =
    "select destination_id from prefixe where prefix_id <> '' and provider_id=%d and '%s' like prefix_id+'*' "
    "order by prefix_id desc";
constexpr const char* kLocalDestination =
    "select destination_id from prefixe where provider_id=%d and (prefix_id = '' or prefix_id is null)";
constexpr const char* kNormalisedDestination =
    "select destination_id from prefixe where provider_id=%d and '%s' like prefix_id+'*' order by prefix_id desc";
constexpr const char* kPulseCharge =
    "select top 1 * from charges where destination_id = %d and profile_id = %d and charge_minimum_digits <= %d";

std::string timeCharges(DayEncoding encoding, int days) {
  return "select * from charges where destination_id = %d and profile_id = %d and (" + timeCondition(encoding, days) +
         ") and charge_minimum_digits <= %d";
}

// The prefix that won: the same query, asked for its other column.
std::string winningPrefix(jet::Database& database, std::string query) {
  constexpr std::string_view kColumn = "destination_id";
  query.replace(query.find(kColumn), kColumn.size(), "prefix_id");
  const jet::Snapshot rows = database.openSnapshot(query);
  return rows.empty() ? std::string() : rows.at(0, 0).toText();
}

// Columns of `charges` that a band is made of.
enum ChargeColumn : std::size_t { StartTime, EndTime, Days, Resolution, Minimum, UnitValue, FixedAmount, CurrencyCode };
constexpr std::array<std::string_view, 8> kChargeColumns = {
    "charge_start_time", "charge_end_time", "charge_days",    "charge_default_resolution",
    "charge_minimum",    "charge_value",    "charge_default", "charge_currency"};
using ChargePlaces = std::array<std::size_t, kChargeColumns.size()>;

// Nothing when the row's times are no times.
std::optional<ChargeBand> readBand(const jet::Snapshot& rows, std::size_t row, const ChargePlaces& columns) {
  const jet::Value& start = rows.at(row, columns[StartTime]);
  const jet::Value& end = rows.at(row, columns[EndTime]);
  if (start.type() != jet::Type::DateTime || end.type() != jet::Type::DateTime) return std::nullopt;
  return ChargeBand{.startMinute = start.dateTime().secondOfDay() / 60,
                    .endMinute = end.dateTime().secondOfDay() / 60,
                    .days = rows.at(row, columns[Days]).toLong(),
                    .resolution = rows.at(row, columns[Resolution]).toLong(),
                    .minimumSeconds = rows.at(row, columns[Minimum]).toLong(),
                    .value = rows.at(row, columns[UnitValue]).toDouble(),
                    .fixedAmount = rows.at(row, columns[FixedAmount]).toDouble()};
}

// Adds a band to the sum and notes each day on which it was charged.
void addTraced(BandSum& sum, const ChargeBand& band, const std::string& currency, PriceTrace& trace) {
  PriceTrace::Band traced{band, currency, {}};
  const std::function<void(const BandDay&)> note = [&](const BandDay& day) { traced.charged.push_back(day); };
  sum.add(band, &note);
  trace.bands.push_back(std::move(traced));
}

}  // namespace

PriceCalculator::PriceCalculator(foundation::ConfigManager& config, const exchange::PartyDefinitions& parties,
                                 TariffDatabase* tariffs, security::AuditLog& log,
                                 const foundation::LanguageFile& language, platform::Operator& person)
    : config_(config),
      parties_(parties),
      tariffs_(tariffs),
      log_(log),
      language_(language),
      person_(person),
      dialledDestination_(kDialledDestination),
      localDestination_(kLocalDestination),
      normalisedDestination_(kNormalisedDestination),
      pulseCharge_(kPulseCharge),
      chargeColumns_(kChargeColumns) {}

PriceOutcome PriceCalculator::CalcPrice(CallRecord& record, PricingContext& output, std::int32_t& ignore,
                                        PriceTrace* trace) {
  const foundation::ConfigManager::View settings(config_);
  readSettings();
  ignore = 0;
  output.price = 0;
  output.currency.clear();
  output.area = "???";
  const auto start = startOf(record);
  if (!start) return PriceOutcome::ImpossibleDate;
  Call call{.record = record, .trace = trace, .start = *start, .duration = record.durationInSeconds()};
  if (trace != nullptr) trace->start = start;

  if (isIgnoredAsShort(call)) {
    ignore = 1;
    return PriceOutcome::Ignored;
  }
  findTrunk(call, output);
  if (call.trunk->providerId < 0) return PriceOutcome::NoProvider;
  if (call.trunk->ignoreZeroPulses != 0 && record.pulses == 0) return PriceOutcome::NoPulses;
  findProvider(call, output);
  if (record.dialledNumber.empty()) return PriceOutcome::NoNumber;
  call.normalised =
      normaliseNumber(record.dialledNumber, call.provider->nationalPrefix, parties_.countryCode, parties_.areaCode);
  if (trace != nullptr) trace->normalisedNumber = call.normalised;

  if (tariffs_ == nullptr) return reportNoRule(call, PriceOutcome::NoTariffs);
  const jet::ReadView view(tariffs_->database());
  if (!findProfile(call)) return PriceOutcome::NoProfile;
  takeFreeSecondsOff(call);
  if (call.chargedSeconds() < 1) return PriceOutcome::NothingToCharge;
  if (!findDestination(call)) return reportNoRule(call, PriceOutcome::NoDestination);
  return call.trunk->pulses != 0 ? priceByPulses(call, output) : priceByTime(call, output);
}

std::string PriceCalculator::normalise(std::string_view number, const exchange::ProviderDefinition& provider) const {
  return normaliseNumber(number, provider.nationalPrefix, parties_.countryCode, parties_.areaCode);
}

void PriceCalculator::readSettings() {
  if (settings_.version == config_.settingsVersion()) return;
  settings_ = {.version = config_.settingsVersion(),
               .ignoredUpTo = config_.ReadConfigInt(foundation::keys::calls::Ignore_short_calls),
               .secondsNotCharged = config_.ReadConfigInt(foundation::keys::calls::Seconds_not_charged) != 0};
}

bool PriceCalculator::isIgnoredAsShort(Call& call) const {
  if (settings_.ignoredUpTo == kIgnoresNone) return false;
  if (call.trace != nullptr) call.trace->ignoredUpTo = settings_.ignoredUpTo;
  return call.duration <= settings_.ignoredUpTo;
}

void PriceCalculator::findTrunk(Call& call, PricingContext& output) const {
  const auto* definition = parties_.findTrunk(std::to_string(call.record.trunk));
  if (definition != nullptr) {
    call.trunk = definition;
    output.profile = definition->profile;
  }
  if (call.trace != nullptr) {
    call.trace->trunk = PriceTrace::Trunk{definition != nullptr, call.record.trunk, *call.trunk};
  }
}

void PriceCalculator::findProvider(Call& call, PricingContext& output) const {
  const auto* definition = parties_.findProvider(call.trunk->providerId);
  if (definition != nullptr) {
    call.provider = definition;
    output.provider = definition->name;
  }
  if (call.trace != nullptr) {
    call.trace->provider = PriceTrace::Provider{definition != nullptr, call.trunk->providerId, *call.provider};
  }
}

bool PriceCalculator::findProfile(Call& call) {
  jet::Database& database = tariffs_->database();
  const std::uint64_t version = database.tableVersion("profiles");
  const base::DateTime day = call.start.midnight();
  KnownProfile& known = rememberedProfile(call);
  const bool isKnown = known.version == version && known.day == day && known.providerId == call.trunk->providerId &&
                       known.name == call.trunk->profile;
  if (!isKnown || call.trace != nullptr) {
    const jet::Snapshot rows =
        database.openSnapshot(profileQuery(call.trunk->profile, call.start, call.trunk->providerId));
    if (rows.empty()) return false;
    known = {.version = version,
             .day = day,
             .providerId = call.trunk->providerId,
             .name = call.trunk->profile,
             .id = rows.at(0, "profile_id").toLong(),
             .freeMinutes = rows.at(0, "free_minutes").toLong()};
    if (call.trace != nullptr) {
      call.trace->profile = PriceTrace::Profile{.id = known.id,
                                                .name = rows.at(0, "profile_name").toText(),
                                                .startDate = rows.at(0, "profile_start_date").toDateTime(),
                                                .freeMinutes = known.freeMinutes};
    }
  }
  call.profileId = known.id;
  // Seconds, whatever the column's name says.
  call.freeSeconds = call.provider->freeSeconds != 0 ? call.provider->freeSeconds : known.freeMinutes;
  return true;
}

// The place for the call's profile, which may hold another one.
PriceCalculator::KnownProfile& PriceCalculator::rememberedProfile(const Call& call) {
  constexpr std::int64_t kDay = 24 * 60 * 60;  // seconds
  const auto place = static_cast<std::uint64_t>(call.start.secondsSinceDayZero() / kDay + call.trunk->providerId);
  return profiles_[place % profiles_.size()];
}

// With "Seconds_not_charged" the free seconds leave the record itself, so that they are not stored either. Only the
// seconds field is touched, even where that leaves it below 0: the three fields are read as one sum again.
void PriceCalculator::takeFreeSecondsOff(Call& call) const {
  const bool wanted = settings_.secondsNotCharged;
  if (wanted && call.chargedSeconds() >= 1) call.record.takeOffSeconds(call.freeSeconds);
  if (wanted && call.chargedSeconds() < 1) call.record.durationSeconds = 0;
  if (call.trace != nullptr) {
    call.trace->time = PriceTrace::ChargedTime{call.duration, call.freeSeconds, call.chargedSeconds(), wanted};
  }
}

bool PriceCalculator::isLocal(const Call& call) const {
  const bool local = isLocalNumber(call.normalised, call.provider->localPrefixes, parties_.countryCode);
  if (call.trace != nullptr) call.trace->local = local;
  return local;
}

// The number as it was dialled first; then, for a local call, the provider's destination without prefix, for any other
// the number in international form.
bool PriceCalculator::findDestination(Call& call) {
  jet::Database& database = tariffs_->database();
  const std::int64_t provider = call.trunk->providerId;
  jet::PreparedSelect* select = &dialledDestination_;
  std::array<base::FormatArgument, 2> values = {provider, skipServiceCode(call.record.dialledNumber)};
  std::span<const base::FormatArgument> used(values);
  auto match = PriceTrace::Match::Dialled;
  const bool local = isLocal(call);
  jet::Snapshot rows = select->openWith(database, used);
  if (rows.empty()) {
    match = local ? PriceTrace::Match::LocalCatchAll : PriceTrace::Match::Normalised;
    select = local ? &localDestination_ : &normalisedDestination_;
    values[1] = std::string_view(call.normalised);
    used = std::span<const base::FormatArgument>(values).first(local ? 1 : 2);
    rows = select->openWith(database, used);
  }
  if (rows.empty()) return false;
  call.destinationId = rows.at(0, 0).toLong();
  if (call.trace != nullptr) {
    call.trace->destination =
        PriceTrace::Destination{call.destinationId, match, winningPrefix(database, select->text(used))};
  }
  return true;
}

PriceOutcome PriceCalculator::priceByPulses(const Call& call, PricingContext& output) {
  const jet::Snapshot rows = pulseCharge_.open(tariffs_->database(), call.destinationId, call.profileId,
                                               base::characterCount(call.record.dialledNumber));
  if (rows.empty()) return reportNoRule(call, PriceOutcome::NoCharge);
  const jet::Value& currency = rows.at(0, "charge_currency");
  if (currency.type() != jet::Type::Text) return PriceOutcome::UnusableCharge;
  const double value = rows.at(0, "charge_value").toDouble();
  output.currency = currency.text();
  output.price = call.record.pulses * value;
  if (call.trace != nullptr) call.trace->pulses = PriceTrace::Pulses{call.record.pulses, value};
  return PriceOutcome::Priced;
}

PriceOutcome PriceCalculator::priceByTime(const Call& call, PricingContext& output) {
  const DayEncoding encoding = tariffs_->dayEncoding();
  const ChargedInterval interval = chargedInterval(call.start, call.freeSeconds, call.chargedSeconds());
  if (call.trace != nullptr) {
    call.trace->dayEncoding = encoding;
    call.trace->interval = interval;
  }
  const jet::Snapshot rows = openTimeCharges(call, encoding, interval);
  if (rows.empty()) return reportNoRule(call, PriceOutcome::NoCharge);

  const ChargePlaces& columns = chargeColumns_.in(rows);
  BandSum sum(encoding, interval);
  auto outcome = PriceOutcome::Priced;
  for (std::size_t row = 0; row < rows.rowCount(); ++row) {
    const auto band = readBand(rows, row, columns);
    const jet::Value& currency = rows.at(row, columns[CurrencyCode]);
    if (!band || currency.type() != jet::Type::Text) {
      outcome = PriceOutcome::UnusableCharge;
      break;
    }
    output.currency = currency.text();
    if (call.trace == nullptr) {
      sum.add(*band);
    } else {
      addTraced(sum, *band, currency.text(), *call.trace);
    }
  }
  output.price = sum.price();
  return outcome;
}

jet::Snapshot PriceCalculator::openTimeCharges(const Call& call, DayEncoding encoding,
                                               const ChargedInterval& interval) {
  const int days = daysInCondition(interval);
  auto& select = timeCharges_[static_cast<std::size_t>(encoding)][static_cast<std::size_t>(days - 1)];
  if (!select) select.emplace(timeCharges(encoding, days));
  chargeValues_.assign({call.destinationId, call.profileId});
  addTimeValues(encoding, interval, chargeValues_);
  chargeValues_.emplace_back(static_cast<std::int64_t>(base::characterCount(call.record.dialledNumber)));
  return select->openWith(tariffs_->database(), chargeValues_);
}

PriceOutcome PriceCalculator::reportNoRule(const Call& call, PriceOutcome outcome) {
  if (call.trace != nullptr) return outcome;
  if (outcome == PriceOutcome::NoCharge) {
    person_.beep(platform::Operator::Sound::Asterisk);
  } else if (!destinationBeeped_) {
    destinationBeeped_ = true;
    person_.beep(platform::Operator::Sound::Hand);
  }
  log_.WriteLog(
      security::LogError, "%s",
      language_.TranslateFormat("IDS_NO_TARIF_RULE", call.record.dialledNumber, base::format("%d", call.record.trunk)));
  return outcome;
}

}  // namespace tariff
