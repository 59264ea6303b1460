#pragma once

#include <QString>
#include <optional>

#include "ui/texts.h"

namespace ui {

// Sets of weekdays (bit 0 Sunday .. bit 6 Saturday) as the operator writes them.

// "Mon-Fri, Sun" in the language in use.
QString daysText(unsigned days, const Texts& texts);
// The way back, also from single days and whole names. Nothing for a word that names no day or more than one.
std::optional<unsigned> daysFromText(const QString& text, const Texts& texts);

}  // namespace ui
