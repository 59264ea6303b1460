#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "base/datetime.h"
#include "ingest/exchange_parts.h"
#include "platform/clock.h"

namespace ingest {

// Deletes calls older than the days that setting "Sterge" keeps; today counts as one. A value of 0 or less keeps all.
// The result is the number of rows deleted. Nothing while the database is read-only. Throws jet::Error.
// `beforeMany` is called first when calls of more than one day are to go.
std::int64_t deleteOldCalls(jet::Database& main, foundation::ConfigManager& config, const platform::Clock& clock,
                            const std::function<void()>& beforeMany = {});

// True for a text that would end the apostrophes that it is between in a statement: one of its own is not doubled.
[[nodiscard]] bool endsQuotes(std::string_view text);

// Hide or show all calls of a number, stored ones and those to come. The number is in the statements as it is, so
// that two apostrophes in it are one of the number. One that is not doubled would break the statements or reach other
// numbers' calls: jet::Error, and nothing changes.
void HideNumber(jet::Database& main, std::string_view number);
void ShowNumber(jet::Database& main, std::string_view number);

struct RecalcOptions {
  base::DateTime firstDay;  // times of day do not count
  base::DateTime lastDay;
  std::string provider = {};  // empty: all; is in the query as it is, an apostrophe has to be doubled
  bool reprice = false;
  bool reconvert = false;
  bool department = false;
  bool owner = false;
  bool names = false;
  std::int32_t addSeconds = 0;  // to every duration; not 0: prices are calculated again too
};

struct RecalcResult {
  std::int64_t rows = 0;     // looked at
  std::int64_t changed = 0;  // written
  bool cancelled = false;    // at the progress window
  std::string error;         // a database fault ended it (it is in the audit log); the work done so far stays
};

// Computes the stored calls of a period again.
RecalcResult Recalc(const ExchangeParts& parts, const RecalcOptions& options);

}  // namespace ingest
