#include "ingest/trunk_check.h"

#include <algorithm>

#include "base/printf.h"
#include "foundation/definition_change.h"

namespace ingest {

bool TrunkCheck::accept(const exchange::CallRecord& record, tariff::PricingContext& context) {
  if (fillContext(record, context)) return true;
  if (assignFreeEntry(record.trunk)) return fillContext(record, context);
  reportNoEntryLeft(record.trunk);
  return false;
}

// The scan goes on after a match: the last entry wins.
bool TrunkCheck::fillContext(const exchange::CallRecord& record, tariff::PricingContext& context) {
  const std::string trunk = std::to_string(record.trunk);
  bool accepted = false;
  for (const exchange::tagTRUNKINFO& entry : parts_.parties.trunks) {
    if (entry.providerId <= 0 || entry.trunk != trunk) continue;
    accepted = true;
    context.profile = entry.profile;
    if (const exchange::ProviderDefinition* provider = parts_.parties.findProvider(entry.providerId)) {
      context.number = parts_.prices.normalise(record.dialledNumber, *provider);
      context.provider = provider->name;
    }
  }
  return accepted;
}

// Looked for before anything is changed: with all entries taken, every call of an unknown trunk comes here.
bool TrunkCheck::assignFreeEntry(std::int32_t trunk) {
  if (parts_.tariffs == nullptr || freeEntry() == nullptr || !firstProfile()) return false;
  jet::Database& tariffs = parts_.tariffs->database();
  foundation::DefinitionChange change(parts_.parties, parts_.main, &tariffs);
  if (change.reloaded() && isAssigned(trunk)) return true;
  exchange::tagTRUNKINFO* const entry = freeEntry();
  const auto profile = firstProfile();
  if (entry == nullptr || !profile) return false;
  entry->providerId = profile->provider;
  entry->profile = profile->name;
  entry->trunk = std::to_string(trunk);
  entry->pulses = 0;
  entry->ignoreZeroPulses = 0;
  change.save();
  return true;
}

bool TrunkCheck::isAssigned(std::int32_t trunk) const {
  const std::string number = std::to_string(trunk);
  return std::ranges::any_of(parts_.parties.trunks,
                             [&](const auto& entry) { return entry.providerId > 0 && entry.trunk == number; });
}

exchange::tagTRUNKINFO* TrunkCheck::freeEntry() const {
  auto& trunks = parts_.parties.trunks;
  const auto free = std::ranges::find_if(
      trunks, [](const exchange::tagTRUNKINFO& entry) { return entry.providerId == -1 || entry.providerId == 0; });
  return free == trunks.end() ? nullptr : &*free;
}

std::optional<TrunkCheck::Profile> TrunkCheck::firstProfile() const {
  for (const exchange::ProviderDefinition& provider : parts_.parties.providers) {
    const jet::Snapshot profiles = parts_.tariffs->database().openSnapshot(
        base::format("select profile_name from profiles where provider_id = %d", provider.id));
    if (!profiles.empty()) return Profile{provider.id, profiles.at(0, 0).toText()};
  }
  return std::nullopt;
}

void TrunkCheck::reportNoEntryLeft(std::int32_t trunk) {
  parts_.person.beep(800, 50);
  parts_.person.beep(300, 20);
  const std::string text = parts_.language.Translate("IDS_SMDR_TRUNKS_MAX");
  // Most languages' text names no place for the number.
  if (base::placeholders(text).empty()) {
    parts_.log.WriteLog(security::LogError, "%s %d", text, trunk);
  } else {
    parts_.log.WriteLog(security::LogError, text, trunk);
  }
}

}  // namespace ingest
