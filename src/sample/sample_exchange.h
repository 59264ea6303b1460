#pragma once

#include "foundation/config_manager.h"
#include "jet/database.h"

namespace sample {

// Fills new, empty databases with the sample exchange. Each call is one transaction; jet::Error for faults.

// Parties, currencies, contacts, hidden numbers and the organisation's data. `config` has `main` opened; the country
// and area code go to its machine store.
void fillMain(jet::Database& main, foundation::ConfigManager& config);
void fillPhonebook(jet::Database& phonebook);

}  // namespace sample
