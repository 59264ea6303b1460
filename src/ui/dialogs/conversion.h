#pragma once

#include <QWidget>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "convert/conversion_report.h"
#include "server/server_app.h"
#include "ui/texts.h"

namespace ui {

struct ConversionTask {
  std::filesystem::path oldFolder;
  std::filesystem::path newFolder;  // new or empty
  int codepage = 0;                 // of old texts; 0 = the one that each file names
  bool salvage = false;             // go on with the rest when something cannot be read
  std::string password;             // of the administrator who is made when the old database has no users
};

// Throws convert::ConversionError, jet::Error or std::filesystem_error; nothing is left in the new folder then.
convert::ConversionReport convertFolder(const ConversionTask& task, server::CServerApp& app);

// Runs work that may convert, and shows its report. When something cannot be read it asks whether to salvage the rest,
// and if so runs the work again with true. False when it was not done; the reason was told then.
using ConversionWork = std::function<std::optional<convert::ConversionReport>(bool salvage)>;
bool tryConversion(QWidget* parent, const Texts& texts, bool salvage, const ConversionWork& work);

}  // namespace ui
