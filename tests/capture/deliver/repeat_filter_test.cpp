#include "capture/deliver/repeat_filter.h"

#include <gtest/gtest.h>

namespace {

using capture::RepeatFilter;

// Runs lines through a filter, "|" being a break and "." ten seconds without a line; returns what passed.
std::string passed(const std::string& lines) {
  RepeatFilter filter;
  std::string all;
  std::uint64_t position = 0;
  std::int64_t time = 1000;
  const auto keep = [&](const RepeatFilter::Result& result) {
    for (const RepeatFilter::Line& line : result.passed) all += line.text;
  };
  for (const char c : lines) {
    time += 100;
    if (c == '|') {
      keep(filter.breakCame());
    } else if (c == '.') {
      time += 10'000;
      if (filter.due() > 0 && time >= filter.due()) keep(filter.release());
    } else {
      keep(filter.line({++position, time, std::string(1, c)}));
    }
  }
  return all;
}

TEST(RepeatFilter, DropsOnlyARunThatRepeatsTheVeryLastLinesBeforeABreak) {
  const std::pair<const char*, const char*> cases[] = {
      {"abcd|cdef", "abcdef"},    // the last two again, then new ones
      {"abcd|abcdef", "abcdef"},  // all of them again
      {"abcd|efcd", "abcdefcd"},  // new lines first: equal ones after them are calls
      {"abcd|bce", "abcdbce"},    // a run that does not reach the end of what was sent
      {"abcd|bc.d", "abcdbcd"},   // too slow for a run that is sent again
      {"aa", "aa"},               // no break: two equal lines are two calls
      {"|ab", "ab"},              // nothing before the break
      {"ab|b|bc", "abc"},         // twice broken
  };
  for (const auto& [lines, expected] : cases) EXPECT_EQ(expected, passed(lines)) << lines;
}

}  // namespace
