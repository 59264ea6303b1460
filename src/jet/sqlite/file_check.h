#pragma once

#include <filesystem>
#include <string>

#include "jet/database.h"

namespace jet::sqlite {

// Throws what keeps the file from being opened: 3024 missing, 3051 no right, 3343 another format (an old Jet database
// is told apart). An empty file passes: it is a database without tables.
void checkFile(const std::filesystem::path& path, OpenMode mode);

// The description of 3051 for a file that cannot be written.
std::string cannotWrite(const std::filesystem::path& path);

}  // namespace jet::sqlite
