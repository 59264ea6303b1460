#pragma once

#include <string>
#include <vector>

#include "exchange/call_record.h"
#include "foundation/language_file.h"
#include "tariff/price.h"

namespace tariff {

// The steps of a traced price as lines of text in the language in use, for the person who asks why a call costs what it
// costs. English beside a language file without these texts.
[[nodiscard]] std::vector<std::string> priceReport(const PriceTrace& trace, const exchange::CallRecord& record,
                                                   const PricingContext& output, PriceOutcome outcome,
                                                   const foundation::LanguageFile& language);

}  // namespace tariff
