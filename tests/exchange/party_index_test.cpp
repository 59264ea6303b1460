#include "exchange/party_index.h"

#include <gtest/gtest.h>

#include <random>

namespace exchange {
namespace {

TEST(AccountMatchTest, QuestionMarksStandForOneCharacter) {
  const struct {
    const char* definition;
    const char* account;
    bool matches;
  } cases[] = {
      {"12??", "1234", true},       {"12??", "12ab", true}, {"12??", "123", false}, {"12??", "12345", false},
      {"ab", "AB", false},          {"", "", true},         {"?", "", false},       {"?", "?", true},
      {"1?3", "1\u01583", true},  // one character of two bytes
      {"\u0158?", "\u01581", true},
  };
  for (const auto& test : cases) {
    EXPECT_EQ(accountMatches(test.definition, test.account), test.matches) << test.definition << " " << test.account;
  }
}

std::optional<std::size_t> scanAccounts(const std::vector<std::string>& definitions, const std::string& account) {
  for (std::size_t i = 0; i < definitions.size(); ++i) {
    if (accountMatches(definitions[i], account)) return i;
  }
  return std::nullopt;
}

std::optional<std::size_t> scanPrefixes(const std::vector<std::string>& prefixes, const std::string& number) {
  for (std::size_t i = 0; i < prefixes.size(); ++i) {
    if (number.starts_with(prefixes[i])) return i;
  }
  return std::nullopt;
}

// Short texts of few letters, so that equal, overlapping and missing ones are all frequent.
std::string randomText(std::mt19937& random, const std::string& letters, std::size_t longest) {
  std::string text(random() % (longest + 1), ' ');
  for (char& c : text) c = letters[random() % letters.size()];
  return text;
}

TEST(AccountIndexTest, FindsWhatAScanFinds) {
  std::mt19937 random(1);
  for (int round = 0; round < 200; ++round) {
    std::vector<std::string> definitions;
    AccountIndex index;
    for (int i = 0; i < 30; ++i) {
      definitions.push_back(randomText(random, "12?", 4));
      index.add(definitions.back(), definitions.size() - 1);
    }
    for (int i = 0; i < 50; ++i) {
      const std::string account = randomText(random, "123", 4);
      ASSERT_EQ(index.find(account), scanAccounts(definitions, account)) << account;
    }
  }
}

TEST(PrefixIndexTest, FindsWhatAScanFindsWhateverTheOrder) {
  std::mt19937 random(2);
  for (int round = 0; round < 200; ++round) {
    std::vector<std::string> prefixes;
    PrefixIndex index;
    for (int i = 0; i < 40; ++i) {
      prefixes.push_back((round % 2 == 0 ? "00" : "") + randomText(random, "012", 6));
      index.add(prefixes.back(), prefixes.size() - 1);
    }
    for (int i = 0; i < 50; ++i) {
      const std::string number = "00" + randomText(random, "012", 8);
      ASSERT_EQ(index.find(number), scanPrefixes(prefixes, number)) << number;
    }
  }
}

}  // namespace
}  // namespace exchange
