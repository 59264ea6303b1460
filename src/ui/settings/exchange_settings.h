#pragma once

#include "foundation/config_manager.h"
#include "ui/settings/settings_page.h"
#include "ui/texts.h"

namespace ui {

// The exchanges and the service that takes their calls, as a page of the sheet.
SettingsPage exchangePage(foundation::ConfigManager& config, platform::Operator& person, const Texts& texts);

}  // namespace ui
