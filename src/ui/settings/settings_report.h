#pragma once

#include <filesystem>
#include <vector>

#include "ui/settings/settings_page.h"

namespace ui {

// The tables of the pages that are reported, as they are, as a page for the browser ("setari.html"). Rows that hold
// nothing but their number are left out. False when the file cannot be written.
bool writeSettingsReport(const std::filesystem::path& file, const std::vector<SettingsPage>& pages, const Texts& texts);

}  // namespace ui
