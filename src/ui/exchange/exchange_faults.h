#pragma once

#include <QString>

#include "ui/texts.h"

namespace ui {

// What the capture program, which speaks English, found wrong with a value that the page has a field for: by the
// field's caption and in the language of the desktop. Every other text as captureSaid().
[[nodiscard]] QString exchangeFault(const QString& said, const Texts& texts);

// What the capture program said of a connection, a line or a file, in the language of the desktop where it has such a
// text.
[[nodiscard]] QString captureSaid(const QString& said, const Texts& texts);

}  // namespace ui
