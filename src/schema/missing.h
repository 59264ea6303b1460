#pragma once

#include <string>

#include "jet/database.h"
#include "schema/database_place.h"

namespace schema {

// What a database lacks of the tables that the program works with, as one sentence for the operator that names file,
// table and column ("/srv/tariffs.mdb: the table charges lacks the column charge_value."); empty when it is whole.
// Never throws: called when a statement failed, to say what must be mended.
// Of the phonebook also the tables that its map names.
[[nodiscard]] std::string missingFrom(Which which, jet::Database& database);

}  // namespace schema
