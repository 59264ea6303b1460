#include "tariff/dialled_number.h"

#include <gtest/gtest.h>

namespace tariff {
namespace {

TEST(ServiceCodeTest, LeavesTheNumber) {
  const struct {
    const char* number;
    const char* rest;
  } cases[] = {
      {"0213456789", "0213456789"},
      {"*67*0213456", "0213456"},
      {"#31#0213456", "0213456"},
      {"*67#0213456", "0213456"},
      {"*123*0213456", "0213456"},         // ends at position 4, the last that counts
      {"*1234*0213456", "*1234*0213456"},  // one too far
      {"*21**0213456", "0213456"},         // a doubled end goes whole
      {"**0213456", "0213456"},
      {"*", "*"},
      {"**", ""},
      {"*#", ""},
      {"*5", "*5"},
      {"02*13", "02*13"},  // only in front
      {"", ""},
  };
  for (const auto& test : cases) EXPECT_EQ(skipServiceCode(test.number), test.rest) << test.number;
}

TEST(NormaliseTest, GivesTheInternationalForm) {
  const struct {
    const char* number;
    const char* nationalPrefix;
    const char* countryCode;
    const char* areaCode;
    const char* international;
  } cases[] = {
      {"0044201234567", "", "40", "21", "0044201234567"},
      {"3456789", "", "40", "21", "0040213456789"},
      {" 3456789 ", "", "40", "21", "0040213456789"},
      {"0213456789", "", "40", "", "00400213456789"},    // no national prefix: the 0 stays
      {"0213456789", "0", "40", "21", "0040213456789"},  // with one, it goes
      {"3456789", "0", "40", "21", "0040213456789"},
      {"0744", "", "40", "0", "00744"},  // the area code makes it begin with "00"
      {"*67*3456789", "", "40", "21", "0040213456789"},
      {"*67* 0044 1", "", "40", "21", "0044 1"},
      {"", "", "40", "21", "0040"},  // the empty start equals the empty prefix
  };
  for (const auto& test : cases) {
    EXPECT_EQ(normaliseNumber(test.number, test.nationalPrefix, test.countryCode, test.areaCode), test.international)
        << test.number;
  }
}

TEST(LocalNumberTest, BeginsWithALocalPrefix) {
  const struct {
    const char* normalised;
    const char* prefixes;
    bool local;
  } cases[] = {
      {"0040213456", "21", true},     {"0040213456", "31;21", true}, {"0040213456", "31, 21", true},
      {"0040213456", "31 22", false}, {"0040213456", "", false},     {"0040213456", ",; ", false},
      {"0044213456", "21", false},    {"0040", "21", false},         {"40213456", "21", false},
  };
  for (const auto& test : cases) {
    EXPECT_EQ(isLocalNumber(test.normalised, test.prefixes, "40"), test.local) << test.normalised << test.prefixes;
  }
}

}  // namespace
}  // namespace tariff
