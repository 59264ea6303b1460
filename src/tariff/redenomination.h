#pragma once

#include "foundation/config_manager.h"
#include "jet/database.h"
#include "platform/clock.h"
#include "platform/operator.h"
#include "tariff/currencies.h"

namespace tariff {

// The change from the old leu (ROL) to the new one (RON, 10,000 old ones), run at every start and done once: where
// CountryCode is "40", more than one currency is defined and RON is not among them. Adds RON, and converts the rates,
// the stored calls and the charge bands. True when it was done now; the operator is told when amounts changed.
// `tariffs` may be null. Throws jet::Error; nothing has changed in the main database then, and the next start tries
// again.
bool redenominate(jet::Database& main, jet::Database* tariffs, Currencies& currencies,
                  foundation::ConfigManager& config, const platform::Clock& clock, platform::Operator& person);

}  // namespace tariff
