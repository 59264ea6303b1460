#pragma once

#include <filesystem>

#include "server/server_doc.h"
#include "ui/dialogs.h"
#include "ui/texts.h"

namespace ui {

// A page of that name in the folder of setting "Path", or in the user's documents without it.
[[nodiscard]] std::filesystem::path reportFile(server::CServerDoc& document, const char* name);

// Hands a written page to the desktop; says so when nothing there takes it. False when the operator thought better of
// printing it.
bool handOver(server::CServerDoc& document, const Texts& texts, QWidget* parent, const std::filesystem::path& page,
              ReportUse use);

}  // namespace ui
