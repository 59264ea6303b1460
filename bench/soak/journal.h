#pragma once

#include <chrono>
#include <string>

#include "exchange.h"

namespace soak {

// What the service said: the lines that `tallyctl serve` wrote in the folder of an exchange.
inline constexpr std::chrono::seconds kPatience{30};

std::string journal(const Exchange& exchange);
// How often it has said a text.
int said(const Exchange& exchange, const std::string& part);
// False when it does not say it, so many times in all, within that time.
bool waitForJournal(const Exchange& exchange, const std::string& part, int times = 1,
                    std::chrono::seconds patience = kPatience);

}  // namespace soak
