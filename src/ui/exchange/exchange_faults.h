#pragma once

#include <QString>

#include "ui/texts.h"

namespace ui {

// What the capture program, which speaks English, found wrong with a value that the page has a field for: by the
// field's caption and in the language of the desktop. Every other text as it is.
[[nodiscard]] QString exchangeFault(const QString& said, const Texts& texts);

}  // namespace ui
