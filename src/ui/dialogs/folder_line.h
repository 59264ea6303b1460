#pragma once

#include <QLineEdit>

#include "ui/texts.h"

namespace ui {

// A line for a folder with a button to choose one beside it. The line is the focus proxy of the two.
QWidget* withBrowseButton(QLineEdit* line, const Texts& texts);

// An absolute path without a separator at its end, "~" being the user's home; empty stays empty, and the
// address of a server as it is.
QString wholePath(QString path);

}  // namespace ui
