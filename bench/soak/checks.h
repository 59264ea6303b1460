#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "exchange.h"

namespace soak {

// True when `good`; else says what is not.
bool check(bool good, const std::string& what);

// True when the audit log holds no error entry; else prints the first ones.
bool logIsClean(const Exchange& exchange);

// The value below which that share (0..1) of the sorted values lies.
std::int64_t percentile(const std::vector<std::int64_t>& sorted, double share);

void printLatencies(const std::vector<std::int64_t>& sorted);

}  // namespace soak
