#include <gtest/gtest.h>

#include "jet/operators.h"

namespace jet {
namespace {

struct LikeCase {
  std::string_view text;
  std::string_view pattern;
};

TEST(Like, Matches) {
  const LikeCase cases[] = {
      {"", ""},
      {"", "*"},
      {"", "**"},
      {"", "[]"},
      {"0213456", "021*"},
      {"ABC", "abc"},
      {"abc", "A?c"},
      {"a1c", "a#c"},
      {"xayb", "*a*b"},
      {"aab", "*ab"},
      {"abcabd", "*ab?"},
      {";1;;25;", "*;25;*"},
      {"100%", "100%"},
      {"a_b", "a_b"},
      {"a.b\\c", "a.b\\*"},
      {"m", "[a-z]"},
      {"M", "[a-z]"},
      {"m", "[A-Z]"},
      {"5", "[!a-z]"},
      {"-", "[a-]"},
      {"-", "[-a]"},
      {"b", "[abc]"},
      {"q", "[a-cp-r]"},
      {"a*b", "a[*]b"},
      {"a?b", "a[?]b"},
      {"a#b", "a[#]b"},
      {"a[b", "a[[]b"},
      {"a]b", "a]b"},
      {"a[b", "a[b"},
      {"[", "["},
      {"x[", "*["},
      {"ab", "a[]b"},
      {"!", "[!]"},
      {"ȘTEFAN", "ștef*"},
      {"Ștefan", "?tefan"},
      {"é", "[à-ü]"},
      {"É", "[à-ü]"},
      {"\xFFx", "?x"},
      {"\xFF", "\xFF"},
      {"line\nbreak", "line*"},
      {"0213456", "*345*"},
      {"Ana Popescu", "*a pOP*"},
      {"aab", "*ab*"},
      {"x*", "*[*]*"},
  };
  for (const auto& each : cases) EXPECT_TRUE(like(each.text, each.pattern)) << each.text << " like " << each.pattern;
}

TEST(Like, DoesNotMatch) {
  const LikeCase cases[] = {
      {"", "?"},         {"a", ""},       {"abc", "ab"},   {"0213456", "022*"}, {"axc", "a#c"},
      {"a٣c", "a#c"},  // a digit of another script
      {"100x", "100%"},  {"axb", "a_b"},  {"m", "[!a-z]"}, {"b", "[a-]"},       {"ab", "a[*]b"},
      {"a**b", "a[*]b"}, {"aXb", "a[b"},  {"abd", "*ab"},  {"s", "ș"},          {"Ștefan", "??tefan"},
      {"\xFE", "\xFF"},  {"ab", "*abc*"}, {"", "*a*"},     {"aba", "*bb*"},     {"[", "*{*"},
  };
  for (const auto& each : cases) EXPECT_FALSE(like(each.text, each.pattern)) << each.text << " like " << each.pattern;
}

TEST(Like, TakesBoundedWorkForManyStars) {
  const std::string text(5000, 'a');
  std::string pattern;
  for (int i = 0; i < 200; ++i) pattern += "a*";
  EXPECT_FALSE(like(text, pattern + "b"));
  EXPECT_TRUE(like(text, pattern));
}

TEST(Like, KnowsAPatternFromAPlainText) {
  for (const auto pattern : {"*", "a?", "#", "[a"}) EXPECT_TRUE(hasWildcard(pattern)) << pattern;
  for (const auto pattern : {"", "021", "a%_!-]"}) EXPECT_FALSE(hasWildcard(pattern)) << pattern;
}

}  // namespace
}  // namespace jet
