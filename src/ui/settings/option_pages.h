#pragma once

#include "foundation/config_manager.h"
#include "ui/settings/settings_page.h"
#include "ui/texts.h"

namespace ui {

// Pages of single settings: a form made from a table of settings.
SettingsPage callOptionsPage(foundation::ConfigManager& config, const Texts& texts);
SettingsPage organizationPage(foundation::ConfigManager& config, const Texts& texts);
SettingsPage placePage(foundation::ConfigManager& config, const Texts& texts);  // folders, codes, output line
SettingsPage interfacePage(foundation::ConfigManager& config, const Texts& texts);

}  // namespace ui
