#include "ingest/trunk_check.h"

#include <algorithm>

#include "base/printf.h"

namespace ingest {

bool TrunkCheck::accept(const exchange::CallRecord& record, tariff::PricingContext& context) {
  if (fillContext(record, context)) return true;
  if (assignFreeEntry(record.trunk)) return fillContext(record, context);
  reportNoEntryLeft(record.trunk);
  return false;
}

// The scan goes on behind a match: the last entry wins.
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

bool TrunkCheck::assignFreeEntry(std::int32_t trunk) {
  if (parts_.tariffs == nullptr) return false;
  auto& trunks = parts_.parties.trunks;
  const auto free = std::find_if(trunks.begin(), trunks.end(), [](const exchange::tagTRUNKINFO& entry) {
    return entry.providerId == -1 || entry.providerId == 0;
  });
  if (free == trunks.end()) return false;
  for (const exchange::ProviderDefinition& provider : parts_.parties.providers) {
    const jet::Snapshot profiles = parts_.tariffs->database().openSnapshot(
        base::format("select profile_name from profiles where provider_id = %d", provider.id));
    if (profiles.empty()) continue;
    free->providerId = provider.id;
    free->profile = profiles.at(0, 0).toText();
    free->trunk = std::to_string(trunk);
    free->pulses = 0;
    free->ignoreZeroPulses = 0;
    parts_.parties.reindex();
    parts_.parties.save(parts_.main);
    return true;
  }
  return false;
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
