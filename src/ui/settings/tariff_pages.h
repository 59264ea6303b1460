#pragma once

#include <memory>
#include <vector>

#include "tariff/tariff_tables.h"
#include "ui/settings/party_pages.h"
#include "ui/settings/settings_page.h"
#include "ui/texts.h"

namespace ui {

// The operator's copy of the tariff database while the settings sheet is open.
struct EditedTariffs {
  tariff::TariffTables tables;
  bool changed = false;
};

// Providers with their local prefixes and free seconds (kept with the parties), profiles, destination prefixes, charge
// bands and the areas that prefixes stand for: one page each.
std::vector<SettingsPage> tariffPages(std::shared_ptr<EditedTariffs> tariffs, std::shared_ptr<EditedParties> parties,
                                      const Texts& texts);

// "Mon, Tue, Wed" in the language in use; and back, also from ranges such as "Mon-Fri". Nothing for a word that names
// no day or more than one.
QString daysText(unsigned days, const Texts& texts);
std::optional<unsigned> daysFromText(const QString& text, const Texts& texts);

}  // namespace ui
