#pragma once

#include <string>
#include <string_view>

namespace analysis {

// Tells whether two numbers, as the exchange gave them, are of one subscriber: "3456789", "0213456789",
// "0040213456789", "+40 21 345 67 89" and "*31*0213456789" are, where the country code is 40 and the area code 21.
class SubscriberNumbers {
 public:
  // Settings "CountryCode" and "AreaCode"; either may be empty.
  SubscriberNumbers(std::string_view countryCode, std::string_view areaCode);

  // The digits in international form, equal for the numbers of one subscriber. Empty for a number without digits: a
  // caller who hides his number is no one who can be found again.
  [[nodiscard]] std::string key(std::string_view number) const;
  // The same into a text that is kept, for loops over many calls.
  void keyInto(std::string_view number, std::string& key) const;

 private:
  std::string international_;  // "00" and the country code
  std::string local_;          // the same and the area code
};

}  // namespace analysis
