#pragma once

#include <filesystem>
#include <memory>

#include "jet/database.h"

namespace server {

// The phonebook of that data folder, writable where it can be; null when there is none.
[[nodiscard]] std::unique_ptr<jet::Database> openPhonebookFile(const std::filesystem::path& folder);

}  // namespace server
