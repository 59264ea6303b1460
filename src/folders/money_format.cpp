#include "folders/money_format.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "base/printf.h"

namespace folders {

namespace {

constexpr double kLargestGrouped = 400000000000.0;
// More than the amounts carry; keeps the scaled fraction within 64 bits.
constexpr std::int32_t kMostDecimals = 12;

constexpr auto kPowersOfTen = [] {
  std::array<double, kMostDecimals + 1> powers{1};
  for (std::size_t i = 1; i < powers.size(); ++i) powers[i] = powers[i - 1] * 10;
  return powers;
}();

std::string grouped(std::int64_t whole, char thousands) {
  std::string digits = std::to_string(whole);
  for (std::size_t at = digits.size(); at > 3;) {
    at -= 3;
    digits.insert(at, 1, thousands);
  }
  return digits;
}

std::string withDecimals(double amount, std::int32_t count, const Separators& separators) {
  if (!std::isfinite(amount)) return {};
  if (amount < 0) return "-" + withDecimals(-amount, count, separators);
  if (amount > kLargestGrouped) return base::format(base::format("%%.%df", count), amount);

  const double scale = kPowersOfTen[static_cast<std::size_t>(count)];
  const double rounded = amount + 5 / (scale * 10);
  const double whole = std::floor(rounded);
  std::string text = grouped(static_cast<std::int64_t>(whole), separators.thousands);
  if (separators.decimal.empty() || count == 0) return text;
  const std::string fraction = std::to_string(static_cast<std::int64_t>((rounded - whole) * scale));
  text += separators.decimal;
  const auto decimals = static_cast<std::size_t>(count);
  if (fraction.size() < decimals) text.append(decimals - fraction.size(), '0');
  return text += fraction;
}

}  // namespace

const MoneyFormat::Decimals& MoneyFormat::decimals() const {
  if (!decimals_) {
    decimals_ =
        Decimals{.above = std::clamp(config_.ReadConfigInt(foundation::keys::DisplayDecimalsDefault), 0, kMostDecimals),
                 .limit = config_.ReadConfigInt(foundation::keys::DisplayDecimalsValue),
                 .upToLimit = std::clamp(config_.ReadConfigInt(foundation::keys::DisplayDecimals), 0, kMostDecimals)};
  }
  return *decimals_;
}

std::string MoneyFormat::format(double amount, char thousands, std::string_view decimal) const {
  const bool small = std::abs(amount) <= decimals().limit;
  return withDecimals(amount, small ? decimals().upToLimit : decimals().above,
                      {.decimal = std::string(decimal), .thousands = thousands});
}

std::string MoneyFormat::formatExact(double amount, char thousands, std::string_view decimal) const {
  return withDecimals(amount, decimals().upToLimit, {.decimal = std::string(decimal), .thousands = thousands});
}

double MoneyFormat::rounded(double amount) const {
  const double scale = kPowersOfTen[static_cast<std::size_t>(decimals().upToLimit)];
  return std::isfinite(amount) ? std::round(amount * scale) / scale : 0;
}

Separators separatorsOf(const foundation::LanguageFile& texts) {
  Separators separators;
  const std::string decimal = texts.Translate("IDS_DECIMAL_SEPARATOR");
  const std::string thousands = texts.Translate("IDS_THOUSANDS_SEPARATOR");
  // A key without a text is its own text.
  if (decimal != "IDS_DECIMAL_SEPARATOR") separators.decimal = decimal;
  if (thousands.size() == 1) separators.thousands = thousands.front();
  return separators;
}

}  // namespace folders
