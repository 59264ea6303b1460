#include "tariff/price_list_import.h"

#include <algorithm>
#include <set>
#include <tuple>

#include "base/printf.h"
#include "base/text.h"
#include "tariff/dialled_number.h"

namespace tariff {

namespace {

constexpr unsigned kEveryDay = 0x7F;
constexpr int kSecondsAMinute = 60;
constexpr int kHundredths = 100;  // of a second, the unit of resolutions

// A working day at 10:00, by which prices are compared.
constexpr unsigned kWednesday = 1U << 3;
constexpr int kTenOClock = 10 * 60;

ChargeRow chargeOf(const PriceTerms& terms) {
  return {.resolution = terms.nextSeconds * kHundredths,
          // Within one unit the rounding charges the minimum already.
          .minimumSeconds = terms.firstSeconds == terms.nextSeconds ? 0 : terms.firstSeconds,
          .value = terms.perMinute * terms.nextSeconds / kSecondsAMinute,
          .fixedAmount = terms.connection,
          .currency = terms.currency};
}

}  // namespace

std::optional<double> PriceChange::percent() const {
  constexpr double kPercent = 100;
  if (!before || !after || *before == 0) return std::nullopt;
  return (*after - *before) / *before * kPercent;
}

PriceListImport::PriceListImport(TariffDatabase& tariffs, PriceListTarget target, const PriceList& list,
                                 const ConvertAmount& convert)
    : tariffs_(tariffs),
      target_(std::move(target)),
      tables_(loadTariffTables(tariffs.database(), tariffs.dayEncoding())) {
  findProfileBefore();
  for (const PrefixRow& row : tables_.prefixes) {
    if (row.providerId == target_.providerId) destinations_.emplace(row.prefix, row.destinationId);
  }
  for (const ChargeRow& charge : tables_.charges) charges_.emplace(charge.destinationId, &charge);
  for (const PriceListEntry& entry : list.entries) entries_.emplace(entry.prefix, &entry);
  placePrefixes(list);
  compare(convert);
}

void PriceListImport::findProfileBefore() {
  std::optional<base::DateTime> start;
  for (const ProfileRow& profile : tables_.profiles) {
    if (profile.providerId != target_.providerId || !profile.startDate ||
        !base::equalFold(profile.name, target_.profile)) {
      continue;
    }
    if (profile.startDate->midnight() == target_.from) {
      throw PriceListError(base::Refusal(
          "IDS_PRICE_LIST_DATE", "Profile \"%s\" of provider %d has prices from %s on already. Give another date.",
          target_.profile, target_.providerId, target_.from.format("%d.%m.%Y")));
    }
    if (*profile.startDate < target_.from && (!start || *profile.startDate > *start)) {
      start = profile.startDate;
      profileBefore_ = profile.profileId;
      freeMinutes_ = profile.freeMinutes;
    }
  }
}

void PriceListImport::placePrefixes(const PriceList& list) {
  for (const auto& [prefix, destination] : destinations_) places_.emplace(prefix, placeOf(prefix));
  const std::string home = base::format("%s%s", kInternational, target_.countryCode);
  for (const PriceListEntry& entry : list.entries) {
    places_.try_emplace(entry.prefix, placeOf(entry.prefix));
    // Calls are looked up as dialled first: home numbers are dialled in national form.
    if (!target_.countryCode.empty() && entry.prefix.starts_with(home) && entry.prefix.size() > home.size()) {
      const std::string national = "0" + entry.prefix.substr(home.size());
      places_.try_emplace(national, placeOf(national));
    }
  }
}

// The form in which the list names the numbers of a prefix; empty for short numbers, which no list names.
std::string PriceListImport::internationalForm(const std::string& prefix) const {
  if (prefix.starts_with(kInternational)) return prefix;
  if (target_.countryCode.empty()) return {};
  const std::string home = base::format("%s%s", kInternational, target_.countryCode);
  if (prefix.empty()) return home + target_.areaCode;  // the provider's local calls
  return prefix[0] == '0' ? home + prefix.substr(1) : std::string();
}

const PriceListEntry* PriceListImport::entryFor(const std::string& international) const {
  for (std::string key = international; key.size() > kInternational.size(); key.pop_back()) {
    const auto found = entries_.find(key);
    if (found != entries_.end()) return found->second;
  }
  return nullptr;
}

std::optional<std::int32_t> PriceListImport::longestMatch(std::string prefix) const {
  for (; !prefix.empty(); prefix.pop_back()) {
    const auto found = destinations_.find(prefix);
    if (found != destinations_.end()) return found->second;
  }
  return std::nullopt;
}

// As the price of a call finds it: by the number as dialled, then by its international form.
std::optional<std::int32_t> PriceListImport::destinationBefore(const std::string& prefix) const {
  if (const auto dialled = longestMatch(prefix)) return dialled;
  const std::string normalised = normaliseNumber(prefix, "", target_.countryCode, target_.areaCode);
  if (!prefix.empty() && !isLocalNumber(normalised, target_.localPrefixes, target_.countryCode)) {
    return longestMatch(normalised);
  }
  const auto local = destinations_.find("");
  return local != destinations_.end() ? std::optional(local->second) : std::nullopt;
}

PriceListImport::Place PriceListImport::placeOf(const std::string& prefix) const {
  const std::string international = internationalForm(prefix);
  Place place{.destination = destinationBefore(prefix),
              .entry = entryFor(international),
              .isNew = !destinations_.contains(prefix)};
  const bool named = place.entry != nullptr && place.entry->prefix == international;
  const bool isHome =
      !prefix.starts_with(kInternational) ||
      (!target_.countryCode.empty() && prefix.starts_with(base::format("%s%s", kInternational, target_.countryCode)));
  const auto free = [&] {
    const auto before = place.destination ? minutePriceBefore(*place.destination, {}) : std::nullopt;
    return before && *before == 0;
  };
  if (!named && ((place.entry == nullptr && isHome) || free())) {
    place.entry = nullptr;
    place.kept = true;
  }
  return place;
}

// Without a conversion in the band's own currency.
std::optional<double> PriceListImport::minutePriceBefore(std::int32_t destination, const ConvertAmount& convert) const {
  if (!profileBefore_) return std::nullopt;
  const auto [first, last] = charges_.equal_range(destination);
  for (auto charge = first; charge != last; ++charge) {
    const ChargeRow& band = *charge->second;
    if (band.profileId != *profileBefore_ || (band.days & kWednesday) == 0 || band.startMinute > kTenOClock ||
        band.endMinute < kTenOClock) {
      continue;
    }
    if (band.resolution == 0) return 0;
    const double price = band.value * kSecondsAMinute * kHundredths / band.resolution;
    return convert ? convert(price, band.currency) : price;
  }
  return std::nullopt;
}

void PriceListImport::compare(const ConvertAmount& convert) {
  constexpr double kEqual = 1e-9;  // sums of decimals differ in their last bits
  for (const auto& [prefix, place] : places_) {
    PriceChange change{.prefix = prefix, .name = place.entry != nullptr ? place.entry->name : std::string()};
    if (place.destination) change.before = minutePriceBefore(*place.destination, convert);
    if (place.entry != nullptr) change.after = convert(place.entry->terms.perMinute, place.entry->terms.currency);
    if (place.kept) change.after = change.before;
    if (place.kept) {
      change.kind = PriceChangeKind::Kept;
    } else if (place.entry == nullptr) {
      change.kind = PriceChangeKind::Gone;
    } else if (place.isNew || !change.before) {
      change.kind = PriceChangeKind::Added;
    } else if (*change.after > *change.before + kEqual) {
      change.kind = PriceChangeKind::Dearer;
    } else if (*change.after < *change.before - kEqual) {
      change.kind = PriceChangeKind::Cheaper;
    }
    changes_.push_back(std::move(change));
  }
}

std::int64_t PriceListImport::count(PriceChangeKind kind) const {
  return std::ranges::count(changes_, kind, &PriceChange::kind);
}

// Writes the plan. Prefixes of one old destination and the same new terms share a destination; where an old one falls
// apart, its first part keeps its number and the others take its bands along, so that nothing changes under the other
// profiles.
class PriceListImport::Writer {
 public:
  explicit Writer(PriceListImport& plan)
      : plan_(plan),
        database_(plan.tariffs_.database()),
        encoding_(plan.tables_.charges.empty() ? DayEncoding::Product : plan.tariffs_.dayEncoding()),
        charges_(database_.openRecordset("SELECT * FROM charges")),
        prefixes_(database_.openRecordset("SELECT * FROM prefixe")) {
    for (const PrefixRow& row : plan.tables_.prefixes) lastDestination_ = std::max(lastDestination_, row.destinationId);
    for (const ChargeRow& row : plan.tables_.charges) lastDestination_ = std::max(lastDestination_, row.destinationId);
    for (const ProfileRow& row : plan.tables_.profiles) {
      profile_ = std::max(profile_, row.profileId);
      if (row.providerId == plan.target_.providerId) profiles_.insert(row.profileId);
    }
    ++profile_;
  }

  std::int32_t write() {
    jet::Transaction transaction(database_);
    addProfile();
    for (const auto& [prefix, place] : plan_.places_) {
      // A prefix that is the provider's already has the first claim to its destination.
      if (!place.isNew) setPrefix(prefix, place, destinationFor(place));
    }
    for (const auto& [prefix, place] : plan_.places_) {
      if (place.isNew) addPrefix(prefix, destinationFor(place));
    }
    addAreas();
    transaction.commit();
    return profile_;
  }

 private:
  using Group = std::tuple<std::optional<std::int32_t>, bool, std::optional<PriceTerms>>;

  void addProfile() {
    const auto profiles = database_.openRecordset("SELECT * FROM profiles");
    profiles->addNew();
    profiles->set("profile_id", profile_);
    if (!plan_.target_.profile.empty()) profiles->set("profile_name", plan_.target_.profile);
    profiles->set("profile_start_date", plan_.target_.from);
    profiles->set("provider_id", plan_.target_.providerId);
    profiles->set("date_group", 0);
    profiles->set("free_minutes", plan_.freeMinutes_);
    profiles->update();
  }

  std::int32_t destinationFor(const Place& place) {
    const Group group{place.destination, place.kept,
                      place.entry == nullptr ? std::nullopt : std::optional(place.entry->terms)};
    const auto [known, added] = groups_.try_emplace(group, 0);
    if (!added) return known->second;
    const bool keepsNumber = place.destination && taken_.insert(*place.destination).second;
    const std::int32_t destination = keepsNumber ? *place.destination : ++lastDestination_;
    known->second = destination;
    if (place.destination) copyCharges(*place.destination, destination, place.kept);
    if (place.entry != nullptr) {
      ChargeRow charge = chargeOf(place.entry->terms);
      charge.destinationId = destination;
      charge.profileId = profile_;
      charge.days = kEveryDay;
      addCharge(*charges_, charge, encoding_);
    }
    return destination;
  }

  void copyCharges(std::int32_t from, std::int32_t to, bool kept) {
    const auto [first, last] = plan_.charges_.equal_range(from);
    for (auto known = first; known != last; ++known) {
      ChargeRow charge = *known->second;
      charge.destinationId = to;
      if (to != from && profiles_.contains(charge.profileId)) addCharge(*charges_, charge, encoding_);
      if (!kept || charge.profileId != plan_.profileBefore_) continue;
      charge.profileId = profile_;
      addCharge(*charges_, charge, encoding_);
    }
  }

  void setPrefix(const std::string& prefix, const Place& place, std::int32_t destination) {
    if (destination == place.destination) return;
    const std::string which = prefix.empty() ? std::string("(prefix_id = '' or prefix_id is null)")
                                             : base::format("prefix_id = '%s'", prefix);
    database_.execute(base::format("update prefixe set destination_id = %d where provider_id = %d and %s", destination,
                                   plan_.target_.providerId, which));
  }

  void addPrefix(const std::string& prefix, std::int32_t destination) {
    prefixes_->addNew();
    prefixes_->set("prefix_id", prefix);
    prefixes_->set("provider_id", plan_.target_.providerId);
    prefixes_->set("destination_id", destination);
    prefixes_->update();
  }

  // Names for numbers that no area names yet. Others keep their names, which filters and reports go by.
  void addAreas() {
    std::set<std::string> known;
    for (const AreaRow& area : plan_.tables_.areas) known.insert(area.prefix);
    const auto areas = database_.openRecordset("SELECT * FROM prefixes2");
    for (const auto& [prefix, entry] : plan_.entries_) {
      if (entry->name.empty() || isNamed(prefix, known)) continue;
      areas->addNew();
      areas->set("prefix_id", prefix);
      areas->set("prefix_name", entry->name);
      areas->set("prefix_ctry", entry->name);
      areas->update();
    }
  }

  static bool isNamed(std::string prefix, const std::set<std::string>& known) {
    for (; !prefix.empty(); prefix.pop_back()) {
      if (known.contains(prefix)) return true;
    }
    return false;
  }

  PriceListImport& plan_;
  jet::Database& database_;
  DayEncoding encoding_;
  std::unique_ptr<jet::Recordset> charges_;
  std::unique_ptr<jet::Recordset> prefixes_;
  std::int32_t lastDestination_ = 0;
  std::int32_t profile_ = 0;         // the new one
  std::set<std::int32_t> profiles_;  // the provider's others
  std::map<Group, std::int32_t> groups_;
  std::set<std::int32_t> taken_;  // old destinations that kept their number
};

std::int32_t PriceListImport::apply() {
  const std::int32_t profile = Writer(*this).write();
  tariffs_.detectDayEncoding();
  return profile;
}

}  // namespace tariff
