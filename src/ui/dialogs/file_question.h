#pragma once

#include <QByteArray>
#include <QStringList>
#include <QWidget>
#include <filesystem>

#include "foundation/config_manager.h"
#include "ui/texts.h"

namespace ui {

// A question where a new file is to be written.
struct FileQuestion {
  const char* name;        // of the dialog
  const char* captionKey;  // of the command
  QStringList kinds;       // "PDF (*.pdf)"; the first one is proposed
  QString title;           // of what is written: the proposed file's name without its ending
};

// Asks in the folder that was used last, and proposes the title with the ending of the kind. An existing file is
// written over after a question only. Empty when the operator chose none.
[[nodiscard]] std::filesystem::path askFile(foundation::ConfigManager& config, const Texts& texts, QWidget* parent,
                                            const FileQuestion& question);

// Makes the content the whole file, there before or not. False when it cannot be written: the old file is as it was.
[[nodiscard]] bool replaceFile(const QString& name, const QByteArray& content);

}  // namespace ui
