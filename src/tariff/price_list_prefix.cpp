#include "tariff/price_list_prefix.h"

#include <algorithm>
#include <charconv>

#include "base/printf.h"
#include "base/text.h"
#include "tariff/dialled_number.h"
#include "tariff/price_list.h"

namespace tariff {

namespace {

constexpr std::size_t kLongestPrefix = 18;  // digits; so many fit a 64-bit number
constexpr std::uint64_t kMostOfRange = 10'000;

base::Refusal noPrefix(std::string_view text) {
  return {"IDS_PRICE_LIST_NO_PREFIX", "no prefix: \"%s\"", text};
}

// Digits, with a leading plus sign as "00"; signs that only make a number readable are dropped.
std::string digitsOf(std::string_view text) {
  std::string digits;
  for (const char c : text) {
    if (c >= '0' && c <= '9') {
      digits += c;
    } else if (c == '+' && digits.empty()) {
      digits = kInternational;
    } else if (c != ' ' && c != '(' && c != ')' && c != '.') {
      throw PriceListError(noPrefix(text));
    }
  }
  return digits;
}

std::string international(std::string_view text, std::string_view countryCode) {
  const std::string digits = digitsOf(text);
  const bool hasInternational = digits.starts_with(kInternational);
  if (digits.empty() || digits == kInternational || digits == "0" || digits.size() > kLongestPrefix) {
    throw PriceListError(noPrefix(text));
  }
  if (hasInternational) return digits;
  if (digits[0] != '0') return std::string(kInternational) + digits;
  if (countryCode.empty()) {
    throw PriceListError(base::Refusal("IDS_PRICE_LIST_NATIONAL",
                                       "a national prefix, and setting CountryCode is not set: \"%s\"", text));
  }
  return base::format("%s%s%s", kInternational, countryCode, digits.substr(1));
}

std::uint64_t numberOf(std::string_view digits) {
  std::uint64_t number = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), number);
  return number;
}

void addRange(std::string_view text, const std::string& first, std::string last, std::vector<std::string>& prefixes) {
  // "40721-5" is short for 40721-40725.
  if (last.size() < first.size()) last = first.substr(0, first.size() - last.size()) + last;
  const std::uint64_t from = numberOf(first);
  const std::uint64_t to = numberOf(last);
  if (last.size() != first.size() || to < from || to - from >= kMostOfRange) {
    throw PriceListError(base::Refusal("IDS_PRICE_LIST_RANGE", "no range of prefixes, or one of more than %d: \"%s\"",
                                       kMostOfRange, text));
  }
  for (std::uint64_t number = from; number <= to; ++number) {
    const std::string digits = std::to_string(number);
    prefixes.push_back(std::string(first.size() - digits.size(), '0') + digits);
  }
}

}  // namespace

std::vector<std::string> internationalPrefixes(std::string_view cell, std::string_view countryCode) {
  std::vector<std::string> prefixes;
  for (const std::string& part : base::split(cell, "/,;")) {
    const std::string_view text = base::trim(part);
    const std::size_t dash = text.find('-');
    if (text.empty()) continue;
    if (dash == std::string_view::npos) {
      prefixes.push_back(international(text, countryCode));
      continue;
    }
    const std::string_view before = base::trim(text.substr(0, dash));
    const std::string_view after = base::trim(text.substr(dash + 1));
    if (after.size() > before.size()) {  // "1-242": the dash only makes the number readable
      prefixes.push_back(international(std::string(before) + std::string(after), countryCode));
      continue;
    }
    addRange(text, international(before, countryCode),
             after.size() < before.size() ? digitsOf(after) : international(after, countryCode), prefixes);
  }
  if (prefixes.empty()) throw PriceListError(noPrefix(cell));
  return prefixes;
}

}  // namespace tariff
