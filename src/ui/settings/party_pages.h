#pragma once

#include <memory>

#include "exchange/party_definitions.h"
#include "ui/settings/settings_page.h"
#include "ui/texts.h"

namespace ui {

// The operator's copies of the party lists while the settings sheet is open.
struct EditedParties {
  std::vector<exchange::tagEXTINFO> extensions;
  std::vector<exchange::tagCONTINFO> accounts;
  std::vector<exchange::tagTRUNKINFO> trunks;
  std::vector<exchange::ClientDefinition> clients;
  std::vector<exchange::ProviderDefinition> providers;
  bool changed = false;

  explicit EditedParties(const exchange::PartyDefinitions& definitions);
  void putInto(exchange::PartyDefinitions& definitions) const;
};

SettingsPage extensionsPage(std::shared_ptr<EditedParties> parties, const Texts& texts);
SettingsPage accountsPage(std::shared_ptr<EditedParties> parties, const Texts& texts);
SettingsPage clientsPage(std::shared_ptr<EditedParties> parties, const Texts& texts);
// `profilesOf` gives the profile names that a provider offers.
SettingsPage trunksPage(std::shared_ptr<EditedParties> parties,
                        std::function<QStringList(std::int32_t providerId)> profilesOf, const Texts& texts);

}  // namespace ui
