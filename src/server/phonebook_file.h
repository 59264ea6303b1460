#pragma once

#include <memory>

#include "jet/database.h"
#include "schema/database_place.h"

namespace server {

// The phonebook of these databases, writable where it can be; null when there is none.
[[nodiscard]] std::unique_ptr<jet::Database> openPhonebookFile(const schema::DatabasePlace& place);

}  // namespace server
