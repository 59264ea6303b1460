#pragma once

#include <string>

#include "capture/transport/settings.h"

namespace capture {

// Fills table, time, id and columns for a database that is laid out like many others: "freepbx" (table cdr, read by the
// format asterisk). False for an unknown name.
[[nodiscard]] bool applySqlPreset(SqlSettings& settings, const std::string& name);

}  // namespace capture
