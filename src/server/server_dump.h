#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "jet/table_rows.h"
#include "schema/database_place.h"

namespace server {

// The databases on a PostgreSQL server as one file, by the server's own programs pg_dump and pg_restore, which must be
// installed here and not be older than the server. Errors are BackupError and jet::Error; 3059 when `goOn`, which is
// asked every few milliseconds, stopped it.

// Ends the names of such files.
inline constexpr const char* kDumpFile = "tallybook.dump";

// All of one moment, while others read and change them. The result is the number of rows of each table, as
// "schema.table".
std::vector<jet::TableRows> dumpDatabases(const schema::DatabasePlace& place, const std::filesystem::path& file,
                                          const std::function<bool()>& goOn);

// What is wrong with such a file; empty when all of it can be read and it has exactly these rows.
std::string faultOfDump(const std::filesystem::path& file, const std::vector<jet::TableRows>& tables);

// Into a database of a server that has none of the schemas yet: all of it or nothing.
void restoreDump(const std::filesystem::path& file, const schema::DatabasePlace& place);

}  // namespace server
