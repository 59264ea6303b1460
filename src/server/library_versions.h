#pragma once

#include <string>
#include <vector>

namespace server {

// The libraries whose version matters to the files that the program reads and writes, each as "SQLite 3.40.1".
[[nodiscard]] std::vector<std::string> libraryVersions();

}  // namespace server
