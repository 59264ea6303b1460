#include "ui/settings/definitions_undo.h"

#include <algorithm>

#include "foundation/definition_change.h"

namespace ui {

namespace {

using Lists = EditedParties::Lists;

tariff::TariffTables loadTariffs(server::CServerDoc& document) {
  return tariff::loadTariffTables(document.smdr().tariffs()->database(), document.smdr().tariffs()->dayEncoding());
}

using Change = foundation::DefinitionChange<exchange::PartyDefinitions>;

jet::Database* tariffDatabase(server::CServerDoc& document) {
  return document.smdr().tariffs() != nullptr ? &document.smdr().tariffs()->database() : nullptr;
}

bool changedSince(server::CServerDoc& document, const StoredDefinitions& after) {
  if (after.tariffs && loadTariffs(document) != *after.tariffs) return true;
  const Change look(document.smdr().parties(), document.database(), tariffDatabase(document));
  const Lists now(document.smdr().parties());
  return now.extensions != after.parties.extensions || now.accounts != after.parties.accounts ||
         now.clients != after.parties.clients;
}

void bringBackTrunks(std::vector<exchange::tagTRUNKINFO>& trunks, const Lists& before, const Lists& after) {
  const std::size_t count = std::min({trunks.size(), before.trunks.size(), after.trunks.size()});
  for (std::size_t i = 0; i < count; ++i) {
    if (trunks[i] == after.trunks[i]) trunks[i] = before.trunks[i];
  }
}

void bringBack(server::CServerDoc& document, const StoredDefinitions& before, const StoredDefinitions& after) {
  if (changedSince(document, after)) {
    server::CServerApp& app = document.app();
    return app.surroundings().person.messageBox(app.language().Translate("IDS_UNDO_CHANGED"));
  }
  if (before.tariffs) {
    tariff::saveTariffTables(document.smdr().tariffs()->database(), *before.tariffs);
    document.smdr().tariffs()->detectDayEncoding();
    document.smdr().parties().load(document.database(), &document.smdr().tariffs()->database());
  }
  Change change(document.smdr().parties(), document.database(), tariffDatabase(document));
  exchange::PartyDefinitions& parties = document.smdr().parties();
  parties.extensions = before.parties.extensions;
  parties.accounts = before.parties.accounts;
  parties.clients = before.parties.clients;
  bringBackTrunks(parties.trunks, before.parties, after.parties);
  for (const exchange::ProviderDefinition& kept : before.parties.providers) {
    const auto now = std::ranges::find(parties.providers, kept.id, &exchange::ProviderDefinition::id);
    if (now != parties.providers.end()) *now = kept;
  }
  parties.reindex();
  change.save();
}

}  // namespace

StoredDefinitions storedDefinitions(server::CServerDoc& document, bool withTariffs) {
  document.smdr().parties().reloadIfChanged(document.database(), tariffDatabase(document));
  StoredDefinitions stored{Lists(document.smdr().parties()), {}};
  if (withTariffs && document.smdr().tariffs() != nullptr) stored.tariffs = loadTariffs(document);
  return stored;
}

std::function<void()> bringBackDefinitions(server::CServerDoc& document, StoredDefinitions before,
                                           StoredDefinitions after) {
  return [&document, before = std::move(before), after = std::move(after)] { bringBack(document, before, after); };
}

}  // namespace ui
