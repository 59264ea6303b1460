#pragma once

#include "server/server_doc.h"
#include "ui/settings/settings_page.h"
#include "ui/texts.h"

namespace ui {

// Pages of what works by itself: alarms, reports that are mailed, the mail server. They read and write their own
// tables.
SettingsPage alarmRulesPage(server::CServerDoc& document, const Texts& texts);
SettingsPage schedulesPage(server::CServerDoc& document, const Texts& texts);
SettingsPage mailPage(server::CServerDoc& document, const Texts& texts);

}  // namespace ui
