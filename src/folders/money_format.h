#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/config_manager.h"
#include "foundation/language_file.h"

namespace folders {

// Amounts of money as the operator sees them. The three "DisplayDecimals" settings are read at the first use and kept
// for the object's life.
class MoneyFormat {
 public:
  explicit MoneyFormat(foundation::ConfigManager& config) : config_(config) {}

  // Rounded half up to the decimals of its size, grouped by thousands; without a decimal separator the fraction is left
  // out. Amounts above 400000000000 are plain digits.
  [[nodiscard]] std::string format(double amount, char thousands, std::string_view decimal) const;
  // The same with "DisplayDecimals" decimals whatever the size: amounts that must add up as printed.
  [[nodiscard]] std::string formatExact(double amount, char thousands, std::string_view decimal) const;
  // The amount as formatExact prints it, half away from zero.
  [[nodiscard]] double rounded(double amount) const;

 private:
  struct Decimals {
    std::int32_t above = 0;      // "DisplayDecimalsDefault": for amounts above the limit
    std::int32_t limit = 100;    // "DisplayDecimalsValue"
    std::int32_t upToLimit = 2;  // "DisplayDecimals"
  };
  [[nodiscard]] const Decimals& decimals() const;

  foundation::ConfigManager& config_;
  mutable std::optional<Decimals> decimals_;
};

// The separators of the language in use.
struct Separators {
  std::string decimal = ".";
  char thousands = ',';
};
[[nodiscard]] Separators separatorsOf(const foundation::LanguageFile& texts);

}  // namespace folders
