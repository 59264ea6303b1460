#pragma once

#include <memory>

#include "ui/settings/edited_parties.h"
#include "ui/settings/edited_tariffs.h"
#include "ui/settings/settings_page.h"
#include "ui/texts.h"

namespace ui {

SettingsPage extensionsPage(const std::shared_ptr<EditedParties>& parties, const Texts& texts);
SettingsPage accountsPage(const std::shared_ptr<EditedParties>& parties, const Texts& texts);
SettingsPage clientsPage(const std::shared_ptr<EditedParties>& parties, const Texts& texts);
// Providers and their profiles are offered as they are in the edited tariffs.
SettingsPage trunksPage(const std::shared_ptr<EditedParties>& parties, const std::shared_ptr<EditedTariffs>& tariffs,
                        const Texts& texts);

}  // namespace ui
