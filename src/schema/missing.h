#pragma once

#include <string>

#include "jet/database.h"

namespace schema {

// What a database lacks of the tables that the program works with, as one sentence for the operator that names file,
// table and column ("/srv/tariffs.mdb: the table charges lacks the column charge_value."); empty when it is whole.
// Never throws: called when a statement failed, to say what must be mended.
[[nodiscard]] std::string missingFromMain(jet::Database& database);
[[nodiscard]] std::string missingFromTariffs(jet::Database& database);
// Also of the tables that its map names.
[[nodiscard]] std::string missingFromPhonebook(jet::Database& database);

}  // namespace schema
