#pragma once

#include <memory>
#include <vector>

#include "ui/settings/edited_tariffs.h"
#include "ui/settings/party_pages.h"
#include "ui/settings/settings_page.h"
#include "ui/texts.h"

namespace ui {

// Providers with their local prefixes and free seconds (kept with the parties), profiles, destination prefixes, charge
// bands and the areas that prefixes stand for: one page each. `currencies` are the codes that amounts can be in.
std::vector<SettingsPage> tariffPages(const std::shared_ptr<EditedTariffs>& tariffs,
                                      const std::shared_ptr<EditedParties>& parties, const QStringList& currencies,
                                      const Texts& texts);

}  // namespace ui
