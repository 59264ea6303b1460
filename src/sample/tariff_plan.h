#pragma once

#include "jet/database.h"

namespace sample {

// Fills an empty tariff database: providers, areas and countries (`prefixes2`), the providers' prefixes (`prefixe`),
// profiles and charge bands. Throws jet::Error.
void fillTariffs(jet::Database& tariffs);

}  // namespace sample
