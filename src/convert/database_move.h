#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "convert/conversion_report.h"
#include "platform/operator.h"
#include "schema/database_place.h"

namespace convert {

struct MovedTable {
  std::string database;  // "tallybook.mdb"
  std::string table;
  TableTally tally;
};

struct DatabaseMove {
  schema::DatabasePlace from;
  std::filesystem::path to;      // as UnfinishedPlace takes it
  std::filesystem::path beside;  // for the page of a bill of databases on a server, as of DatabasePlace::billPage()
};

// Makes the databases of one place again at another, in a folder or on a server: equal tables with equal rows, those
// that this program does not know too. What is read of a database is of one moment. The new ones appear under their
// names when all of them are whole and every table, read back, has the rows, sums and checksum of the old one; the old
// ones stay as they are. Throws ConversionError; then nothing is left behind.
std::vector<MovedTable> moveDatabases(const DatabaseMove& move, platform::Operator& person);

}  // namespace convert
