#pragma once

#include <QString>
#include <optional>
#include <string>
#include <string_view>

#include "ui/texts.h"

namespace ui {

// What is wrong with the address of a server, after a trial of it; empty: the databases can be used.
QString faultOfAddress(const std::string& address, const Texts& texts);

// Asks for the address of a server with the program's databases, and for another one until it can be used; as it is
// kept in setting "PathDatabase". Nothing when the operator gave up.
std::optional<std::string> askServerAddress(std::string_view current, const Texts& texts);

}  // namespace ui
