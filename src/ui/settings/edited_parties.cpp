#include "ui/settings/edited_parties.h"

#include <algorithm>
#include <iterator>

namespace ui {

namespace {

template <typename Providers>
auto findProvider(Providers& providers, std::int32_t id) {
  return std::find_if(providers.begin(), providers.end(), [id](const auto& provider) { return provider.id == id; });
}

template <typename Record>
bool holds(const std::vector<Record>& records, const Record& record) {
  return std::ranges::find(records, record) != records.end();
}

// Where another copy changed the list, too, its entries stay but for those that the operator deleted or changed.
template <typename Record>
void putEdits(std::vector<Record>& stored, const std::vector<Record>& edited, const std::vector<Record>& original) {
  if (stored == original) {
    stored = edited;
    return;
  }
  std::erase_if(stored, [&](const Record& record) { return holds(original, record) && !holds(edited, record); });
  std::ranges::copy_if(edited, std::back_inserter(stored),
                       [&](const Record& record) { return !holds(original, record) && !holds(stored, record); });
}

}  // namespace

EditedParties::Lists::Lists(const exchange::PartyDefinitions& definitions)
    : extensions(definitions.extensions),
      accounts(definitions.accounts),
      trunks(definitions.trunks),
      clients(definitions.clients),
      providers(definitions.providers) {}

void EditedParties::putInto(exchange::PartyDefinitions& definitions) const {
  putEdits(definitions.extensions, lists.extensions, original_.extensions);
  putEdits(definitions.accounts, lists.accounts, original_.accounts);
  putEdits(definitions.clients, lists.clients, original_.clients);
  const std::size_t trunks = std::min(definitions.trunks.size(), lists.trunks.size());
  for (std::size_t i = 0; i < trunks; ++i) {
    if (lists.trunks[i] != original_.trunks[i]) definitions.trunks[i] = lists.trunks[i];
  }
  for (const exchange::ProviderDefinition& edited : lists.providers) {
    const auto stored = findProvider(definitions.providers, edited.id);
    if (stored == definitions.providers.end() || holds(original_.providers, edited)) continue;
    stored->localPrefixes = edited.localPrefixes;
    stored->freeSeconds = edited.freeSeconds;
  }
  definitions.reindex();
}

void EditedParties::takeFrom(const exchange::PartyDefinitions& definitions) {
  lists = Lists(definitions);
  original_ = lists;
}

exchange::ProviderDefinition EditedParties::provider(std::int32_t id) const {
  const auto found = findProvider(lists.providers, id);
  return found == lists.providers.end() ? exchange::ProviderDefinition() : *found;
}

exchange::ProviderDefinition& EditedParties::ownProvider(std::int32_t id) {
  const auto found = findProvider(lists.providers, id);
  if (found != lists.providers.end()) return *found;
  lists.providers.push_back({});
  lists.providers.back().id = id;
  return lists.providers.back();
}

}  // namespace ui
