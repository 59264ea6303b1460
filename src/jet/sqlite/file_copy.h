#pragma once

#include <filesystem>
#include <functional>

#include "jet/sqlite/connection.h"

namespace jet::sqlite {

// Copies the database to a new file as the connection's open transaction sees it. The copy needs no log beside it: it
// is whole by itself. `goOn` is asked every few milliseconds; its answer false ends the copy with Error 3059. Whatever
// fails, no file is left.
void copyDatabase(Connection& source, const std::filesystem::path& file, const std::function<bool()>& goOn);

}  // namespace jet::sqlite
