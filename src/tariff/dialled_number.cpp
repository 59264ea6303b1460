#include "tariff/dialled_number.h"

#include <algorithm>

#include "base/text.h"

namespace tariff {

namespace {

constexpr std::string_view kServiceMarks = "*#";

bool isServiceMark(std::string_view number, std::size_t position) {
  return position < number.size() && kServiceMarks.find(number[position]) != std::string_view::npos;
}

}  // namespace

std::string_view skipServiceCode(std::string_view number) {
  constexpr std::size_t kLastEnd = 4;
  if (number.size() < 2 || !isServiceMark(number, 0)) return number;
  for (std::size_t i = 1; i <= std::min(kLastEnd, number.size() - 1); ++i) {
    if (isServiceMark(number, i)) return number.substr(isServiceMark(number, i + 1) ? i + 2 : i + 1);
  }
  return number;
}

std::string normaliseNumber(std::string_view number, std::string_view nationalPrefix, std::string_view countryCode,
                            std::string_view areaCode) {
  const std::string_view subscriber = base::trim(skipServiceCode(number));
  if (subscriber.starts_with(kInternational)) return std::string(subscriber);
  std::string result;
  if (subscriber.substr(0, 1) != nationalPrefix) {
    result.append(areaCode).append(subscriber);
    if (result.starts_with(kInternational)) return result;
    return result.insert(0, countryCode).insert(0, kInternational);
  }
  return result.append(kInternational).append(countryCode).append(subscriber.substr(nationalPrefix.size()));
}

bool isLocalNumber(std::string_view normalised, std::string_view localPrefixes, std::string_view countryCode) {
  if (!normalised.starts_with(kInternational)) return false;
  normalised.remove_prefix(kInternational.size());
  if (!normalised.starts_with(countryCode)) return false;
  normalised.remove_prefix(countryCode.size());
  constexpr std::string_view kSeparators = ",; ";
  while (!localPrefixes.empty()) {
    const std::size_t end = std::min(localPrefixes.find_first_of(kSeparators), localPrefixes.size());
    if (end > 0 && normalised.starts_with(localPrefixes.substr(0, end))) return true;
    localPrefixes.remove_prefix(std::min(end + 1, localPrefixes.size()));
  }
  return false;
}

}  // namespace tariff
