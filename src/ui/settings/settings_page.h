#pragma once

#include <QString>
#include <QWidget>
#include <functional>

namespace ui {

// One page of the settings sheet. Pages edit copies; save() writes them when the sheet is confirmed.
struct SettingsPage {
  QString caption;
  QWidget* widget = nullptr;  // owned by the sheet
  // Checks what was entered; an empty text when it can be saved, else a sentence that says what to correct.
  std::function<QString()> check;
  // Writes what was changed. Throws jet::Error.
  std::function<void()> save;
};

}  // namespace ui
