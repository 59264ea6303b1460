#pragma once

#include <string>
#include <vector>

#include "exchange/call_record.h"
#include "tariff/price.h"

namespace tariff {

// The steps of a traced price as lines of English text, for the person who asks why a call costs what it costs.
[[nodiscard]] std::vector<std::string> priceReport(const PriceTrace& trace, const exchange::CallRecord& record,
                                                   const PricingContext& output, PriceOutcome outcome);

// Why a call has no price; "priced" for one that has.
[[nodiscard]] std::string describe(PriceOutcome outcome);

}  // namespace tariff
