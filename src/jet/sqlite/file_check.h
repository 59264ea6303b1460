#pragma once

#include <filesystem>
#include <string>

#include "jet/database.h"

namespace jet::sqlite {

// Throws what keeps the file from being opened: 3024 missing, 3051 no right, 3343 no file. Does not open it.
void checkFile(const std::filesystem::path& path, OpenMode mode);

// Throws 3343 for another format; an old Jet database is told apart. Opens and closes the file: only for one that the
// driver has found to be no database.
void refuseForeignFile(const std::filesystem::path& path);

// The description of 3051 for a file that cannot be written.
std::string cannotWrite(const std::filesystem::path& path);

}  // namespace jet::sqlite
