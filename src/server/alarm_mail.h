#pragma once

#include "alarms/alarm_desk.h"
#include "foundation/config_manager.h"

namespace server {

// How alarms are mailed: through the mail server that is set on this machine (section "Mail"), and where none is,
// through the machine's mail program (setting "MailProgram"), from the organisation's address. `config` must outlive
// the result.
[[nodiscard]] alarms::SendMail alarmMailer(foundation::ConfigManager& config);

}  // namespace server
