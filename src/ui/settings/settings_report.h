#pragma once

#include <filesystem>

#include "ui/settings/party_pages.h"
#include "ui/texts.h"

namespace ui {

// The party tables as a page for the browser ("setari.html"). False when the file cannot be written.
bool writeSettingsReport(const std::filesystem::path& file, const EditedParties& parties, const Texts& texts);

}  // namespace ui
