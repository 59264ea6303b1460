#pragma once

#include <optional>
#include <string>

#include "foundation/config_manager.h"
#include "security/login.h"
#include "server/server_app.h"
#include "ui/texts.h"

namespace ui {

// With no database configured, or an old one in the configured folder: a short wizard asks for the language, makes,
// opens or converts a data folder, sets codes, the monitor's folder and the administrator's password, and offers the
// sample. True when the program can go on; false when the operator gave up. `chosen` gets the administrator of a new
// folder, so that who just chose a password is not asked for it.
bool firstRun(server::CServerApp& app, std::optional<security::Credentials>& chosen);

// Asked when the database cannot be opened: shows the reason and lets the operator choose another folder, or give the
// address of a server, which is stored. False when they gave up.
bool chooseDatabase(foundation::ConfigManager& config, const std::string& reason, const Texts& texts);

}  // namespace ui
