#pragma once

#include <QAction>
#include <QList>
#include <QSet>
#include <QWidget>

namespace ui {

// Gives every button, tab and every label with an editor beside it a letter to be reached by with Alt, unless it has
// one: the texts are translated, and the letters must differ within a window whatever the language. OK and Cancel have
// their keys already. Letters of `taken` are left to others; the result holds them and those given now.
QSet<QChar> assignMnemonics(QWidget& window, QSet<QChar> taken = {});

// The same for the entries of a menu.
void assignMnemonics(const QList<QAction*>& entries);

}  // namespace ui
