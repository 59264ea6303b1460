#pragma once

#include <QWidget>

#include "foundation/language_file.h"

namespace ui {

// Replaces "<KEY>" in the window's caption, its labels, buttons, group boxes and tabs by the texts of the language
// file. Windows are built with the keys in brackets and translated when they open.
void translateWindow(QWidget& window, const foundation::LanguageFile& language);

}  // namespace ui
