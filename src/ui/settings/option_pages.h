#pragma once

#include "server/server_app.h"
#include "ui/settings/settings_page.h"
#include "ui/texts.h"

namespace ui {

// Pages of single settings: a form made from a table of settings.
SettingsPage callOptionsPage(server::CServerApp& app, const Texts& texts);
SettingsPage organizationPage(server::CServerApp& app, const Texts& texts);
SettingsPage placePage(server::CServerApp& app, const Texts& texts);  // folders, codes, output line
SettingsPage interfacePage(server::CServerApp& app, const Texts& texts);

}  // namespace ui
