#include "analysis/subscriber.h"

#include "base/printf.h"
#include "tariff/dialled_number.h"

namespace analysis {

namespace {

constexpr std::string_view kTrunkPrefix = "0";
constexpr std::string_view kInternational = "00";

std::string_view withoutTrunkPrefix(std::string_view code) {
  while (code.starts_with(kTrunkPrefix)) code.remove_prefix(kTrunkPrefix.size());
  return code;
}

}  // namespace

SubscriberNumbers::SubscriberNumbers(std::string_view countryCode, std::string_view areaCode)
    : international_(countryCode.empty() ? std::string() : base::format("00%s", withoutTrunkPrefix(countryCode))),
      local_(international_.empty() ? std::string(areaCode)
                                    : base::format("%s%s", international_, withoutTrunkPrefix(areaCode))) {}

std::string SubscriberNumbers::key(std::string_view number) const {
  std::string result;
  keyInto(number, result);
  return result;
}

void SubscriberNumbers::keyInto(std::string_view number, std::string& key) const {
  key.clear();
  for (const char c : tariff::skipServiceCode(number)) {
    if (c >= '0' && c <= '9') {
      key += c;
    } else if (c == '+' && key.empty()) {
      key = kInternational;
    }
  }
  if (key.empty()) return;
  if (key.starts_with(kInternational)) {
    // "+40 (0)21 ...", and the form that the normaliser gives to a number written with its leading 0.
    if (!international_.empty() && key.starts_with(international_) &&
        std::string_view(key).substr(international_.size()).starts_with(kTrunkPrefix)) {
      key.erase(international_.size(), kTrunkPrefix.size());
    }
  } else if (!key.starts_with(kTrunkPrefix)) {
    key.insert(0, local_);
  } else if (!international_.empty()) {
    key.replace(0, kTrunkPrefix.size(), international_);
  }
}

}  // namespace analysis
